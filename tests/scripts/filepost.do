tempname h
file open `h' using lines.txt, write
file write `h' "first line" _n (1/4) " " %8.2f (2) _n
file write `h' `"with "quotes" in"' _tab "x" _col(30) "col" _n _n "last without end"
file close `h'
file open `h' using lines.txt, read
file read `h' line
while r(eof) == 0 {
  display `"[`line'] `r(status)'"'
  file read `h' line
}
display "`r(status)'"
file seek `h' tof
file read `h' line
display `"`line'"'
file seek `h' query
display r(loc)
file close `h'
capture noisily file open `h' using lines.txt, write
capture noisily file open `h' using nosuch.txt, read
capture noisily file read nohandle line
file open b using bin.dat, write binary
file set b byteorder hilo
file write b %4z (1.5) %8z (-2) %1bu (255) %2b (-3) %4bs (70000) %5s ("ab")
capture noisily file write b %1b (200)
file close b
file open b using bin.dat, read binary
file set b byteorder hilo
foreach f in 4z 8z 1bu 2b 4b {
  file read b %`f' local v
  display "`v'"
}
file read b %5s local v
display "[`v']"
file read b %4z local v
display r(eof)
file query
file close _all
* handles of temporary names go with their program
program leaves
  tempname q
  file open `q' using lines.txt, read
  error 459
end
capture leaves
file query
* posting
tempname p
postfile `p' id double z str5 who using posted, replace
forvalues i = 1/4 {
  post `p' (`i') (`i'/3) ("name`i'xyz")
}
capture noisily post `p' (1) (2)
capture noisily post `p' (1) (2) (3)
capture noisily post `p' (1) ("a") ("b")
capture noisily post `p' (1) (2) ("b") (4)
post `p' (.a) (.) ("")
postclose `p'
use posted, clear
list
capture noisily post `p' (1) (2) ("a")
program postfail
  tempname q
  postfile `q' x using lost
  post `q' (1)
  error 1
end
capture postfail
capture confirm file lost.dta
display _rc
capture noisily postfile pp x using posted
