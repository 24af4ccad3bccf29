* The road from the matrix language to the dataset and the console's stores: what it reads and
* writes beside what commands of the console show. chk() says nothing while both agree.
set mosaoptimize on
set more off
mosa
void chk(transmorphic matrix found, transmorphic matrix wanted)
{
    external real scalar checks
    real scalar same

    checks = checks + 1
    same = eltype(found) == eltype(wanted) & rows(found) == rows(wanted) & cols(found) == cols(wanted)
    if (same) same = found == wanted
    if (!same) {
        printf("check %g: %s %g by %g, wanted:\n", checks, eltype(found), rows(found), cols(found))
        found
        wanted
    }
}
checks = 0
end
set obs 8
generate id = _n
generate double v = id^2 if id != 3
generate str6 name = "n" + string(id)
generate byte odd = mod(id, 2)
label define yn 0 "no" 1 "yes"
label values odd yn
* data against the console's own sums and lists
summarize v if odd
mosa: chk(ov_numscalar("r(sum)"), sum(ov_data(., "v", "odd")))
mosa: chk(ov_numscalar("r(N)"), nonmissing(ov_data(., "v", "odd")))
count if v < .
mosa: chk(ov_numscalar("r(N)"), rows(ov_data(., ("id", "v"), 0)))
mosa: chk(ov_sdata((2 \ 8), "name"), ("n2" \ "n8"))
mosa: chk(ov_vlmap("yn", ov_data((1, 2), "odd")), ("yes" \ "no"))
* a program that works through a view, and one that returns results
program centre
    syntax varname
    mosa: centred("`varlist'")
end
program shape, rclass
    mosa: shaped("`1'")
    return add
    return local what `what'
end
mosa
void centred(string scalar name)
{
    real matrix V

    ov_view(V = ., ., name, 0)
    V[., .] = V :- sum(V) / rows(V)
}
void shaped(string scalar name)
{
    real matrix V

    ov_view(V = ., ., name)
    ov_rclear()
    ov_numscalar("r(rows)", rows(V))
    ov_numscalar("r(kept)", nonmissing(V), "hidden")
    ov_matrix("r(ends)", (V[1], V[rows(V)]))
    ov_matrixcolstripe("r(ends)", ("", "first" \ "", "last"))
    ov_local("what", ov_vartype(name))
}
end
centre v
mosa: chk((round(sum(ov_data(., "v")), 1e-9), missing(ov_data(., "v"))), (0, 1))
shape id
return list
display r(kept)
matrix list r(ends)
* views while the data change under them
mosa
ov_view(V = ., ., (1, 4))
ov_view(S = ., ., "id", "odd")
chk((mosa_representation(V), mosa_representation(S)), ("View1", "View2"))
chk(S, (1 \ 3 \ 5 \ 7))
end
drop v
mosa: chk(ov_viewvars(V), (1, 3))
replace odd = 1000 in 1
describe odd
mosa: chk(V[1, .], (1, 1000))
mosa: V[1, 2] = 1.5
list in 1
mosa: chk(ov_viewvars(V), (1, 3))
drop in 8
mosa: chk(V[8, .], (., .))
mosa: chk(V[7, .], (7, 1))
sort odd
mosa: V[1, 2] = 7
describe, short
drop if 1
mosa: ov_view(V, ., "id"); chk((rows(V), cols(V)), (0, 1))
mosa: chk(ov_data(., .), J(0, 3, .))
drop _all
mosa: ov_view(V, ., .); chk((rows(V), cols(V)), (0, 0))
* making a dataset from nothing
mosa
ov_addobs(3)
k = ov_addvar(("byte", "str4"), ("b", "s"))
ov_store(., k[1], (1 \ 300 \ .b))
ov_sstore(., k[2], ("one" \ "three hundred" \ ""))
ov_varlabel("b", "promoted")
ov_vlmodify("lab", 1, "uno")
ov_varvaluelabel("b", "lab")
ov_global("_dta[made]", "by hand")
chk(_ov_addvar("byte", "b"), -110)
chk(_ov_varindex(("s", "t")), (2, .))
end
describe
list
char list
* what fails says so, and changes nothing
capture noisily mosa: ov_data(., "nosuch")
display _rc
capture noisily mosa: ov_data(4, 1)
display _rc
capture noisily mosa: ov_store(., "b", (1 \ 2))
display _rc
capture noisily mosa: k = ov_addvar("float", "s")
display _rc
capture noisily mosa: k = ov_addvar("float", ("new", "if"))
display _rc
capture noisily mosa: ov_varformat("b", "%9s")
display _rc
capture noisily mosa: ov_varrename("b", "s")
display _rc
capture noisily mosa: ov_replacematrix("nosuch", 1)
display _rc
capture noisily mosa: ov_sys_putusb(1)
display _rc
capture noisily mosa: ov_subview(V = ., (1, 2), 1, 1)
display _rc
describe, short
mosa: checks
