* Directories and files.
mkdir sub
capture noisily mkdir sub
quietly cd sub
quietly log using a.log
display "text"
quietly log close
copy a.log b.log
capture noisily copy a.log b.log
copy a.log b.log, replace
capture noisily copy nosuch.log c.log
capture noisily copy a.log a.log, replace
dir *.log, wide
type b.log
erase b.log
capture noisily erase b.log
capture noisily dir *.nosuch
capture noisily cd nosuch
quietly cd ..
capture noisily rmdir sub
capture noisily erase sub
erase sub/a.log
rmdir sub
capture noisily type sub/a.log
capture noisily type
!true
shell exit 3
display _rc
more
capture noisily more x
set obs 2
generate g = _n
capture noisily bysort g: more
quietly memory
display r(data_used)
