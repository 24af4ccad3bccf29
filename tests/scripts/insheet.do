local d : environment TESTDATA
* Faulty lines are named, quotes kept, a repeated or unusable heading replaced.
insheet using "`d'/mixed.csv"
describe
list, nolabel
display id[1] " " big[1] " " name[2]
* Data in memory are not given up without clear, nor for a file that cannot be read.
capture noisily insheet using "`d'/nonames.csv"
display _rc " " _N
capture noisily insheet using "`d'/nosuch.csv", clear
display _rc " " _N
capture noisily insheet using "`d'/empty.csv", clear
display _rc " " _N
capture noisily insheet using "`d'/tabs.txt", comma tab clear
display _rc
capture noisily insheet using "`d'/tabs.txt", nosuch clear
display _rc
* No names in the first row; names given; lone CR line ends.
insheet using "`d'/nonames.csv", clear
list
insheet p q using "`d'/nonames.csv", clear
list
insheet using "`d'/cr.csv", clear
list
insheet using "`d'/tabs.txt", clear
describe
list
display a[2] " " b[2] " " c[2]
* Out and in again gives the same data.
insheet using "`d'/mixed.csv", clear case
outsheet using again.csv, comma
insheet using again.csv, clear
list
capture noisily outsheet using again.csv, comma
display _rc
outsheet id score if score < . using again.csv, replace nonames delimiter(";")
type again.csv
