* ---- a class typed in a do-file
class account {
    classwide:
        double count = 0
    instancespecific:
        string owner
        double sum = 0
        array  notes
}
program account.new
    args owner
    .owner = "`owner'"
    .count = `.count' + 1
end
program account.pay
    args what why
    .sum = `.sum' + `what'
    .notes.arrpush "`why'"
end
program account.report
    class exit "`.owner' has `.sum'"
end
.kim = .account.new Kim
.kim.pay 12.5 "first"
.kim.pay 7
.kim.report
display "`.kim.notes.arrnels' `.kim.notes[1]' `.account.count'"
* ---- a copy is of its own, a reference is not
.lee = .kim
.lee.owner = "Lee"
.lee.pay -20
.alias.ref = .kim
.alias.pay 1
display "`.kim.report'; `.lee.report'; `.alias.report'"
* ---- inheritance from a file
file open h using savings.class, write replace
file write h "version 12.1" _n "class savings {" _n "    double rate = .05" _n "} , inherit(account)" _n
file write h "program .new" _n "    args owner rate" _n "    .super.new \`owner'" _n "    .rate = \`rate'" _n "end" _n
file write h "program .year" _n "    .pay \`.sum'*\`.rate' interest" _n "end" _n
file write h "program .report" _n `"    class exit "\`.super.report' at \`.rate'""' _n "end" _n
file close h
.ann = .savings.new Ann .1
.ann.pay 100
.ann.year
.ann.report
display "`.ann.isofclass account' `.kim.isofclass savings' `.ann.classname' `.account.count'"
class describe savings
class describe ann
capture noisily .ann.rate = "low"
capture noisily .ann.owner = 3
* ---- a linked list and recursion
class cell {
    double value
    cell   next
}
program cell.push
    args x
    if "`.next.objtype'" == "" {
        .next = .cell.new
        .next.value = `x'
    }
    else .next.push `x'
end
program cell.total
    local sum = `.value'
    if "`.next.objtype'" != "" {
        local sum = `sum' + `.next.total'
    }
    class exit `sum'
end
.list = .cell.new
.list.value = 1
forvalues i = 2/5 {
    .list.push `i'
}
display `.list.total'
* ---- a copy told of by oncopy, and one that refers to itself
program cell.oncopy
    .value = `.oncopy_src.value' + 100
end
.far = .list.next.next
display "`.far.value' `.far.next.value' `.list.next.next.value'"
.list.next.ref = .list
display `.list.next.next.next.value'
* ---- keys, members of one object, arrays in arrays
local k "`.ann.objkey'"
.`k'.declare string bank = "here"
.names = .ann.dynamicmv
.own = .ann.instancemv
display "`.ann.bank' `.names[1]' `.own.arrnels'"
.grid = {{1, 2}, {3, 4}}
.grid[2][2] = `.grid[1][2]' * 10
.grid[3] = {"new"}
display "`.grid[2][2]' `.grid[3][1]' `.grid.arrnels' `.grid[2].arrindexof 3'"
display cls(".grid[1][1]") + cls("grid[2][1]") " " scls(".ann.owner") " " cls(".nosuch")
* ---- errors
capture noisily .kim.nosuch 3
capture noisily .kim = .nosuch
capture noisily .list.next = .kim
program account.bad
    .sum = 99
    error 9
end
capture noisily .kim.bad
display "`.kim.sum' " _rc
capture noisily class drop account
class drop .kim .lee .alias .ann
class drop savings
class drop account
class dir
capture noisily class broken {
    double x
    nosuch y z
}
capture noisily class broken {
    double x
    double x
}
display "gone on"
discard
class dir
