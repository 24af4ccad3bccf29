* Faulty lines are named, quotes kept, a repeated or unusable heading replaced.
insheet using "data/mixed.csv"
describe
list, nolabel
display id[1] " " big[1] " " name[2]
* Data in memory are not given up without clear, nor for a file that cannot be read.
capture noisily insheet using "data/nonames.csv"
display _rc " " _N
capture noisily insheet using "data/nosuch.csv", clear
display _rc " " _N
capture noisily insheet using "data/empty.csv", clear
display _rc " " _N
capture noisily insheet using "data/tabs.txt", comma tab clear
display _rc
capture noisily insheet using "data/tabs.txt", nosuch clear
display _rc
* No names in the first row; names given; lone CR line ends.
insheet using "data/nonames.csv", clear
list
insheet p q using "data/nonames.csv", clear
list
insheet using "data/cr.csv", clear
list
insheet using "data/tabs.txt", clear
describe
list
display a[2] " " b[2] " " c[2]
* Out and in again gives the same data.
insheet using "data/mixed.csv", clear case
outsheet using again.csv, comma
insheet using again.csv, clear
list
capture noisily outsheet using again.csv, comma
display _rc
outsheet id score if score < . using again.csv, replace nonames delimiter(";")
type again.csv
