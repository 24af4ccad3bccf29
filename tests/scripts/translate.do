* From mark-up to text and HTML; translators, their parameters, which one is chosen.
quietly log using one.omcl
display "{bf:Bold} <b>&</b> {help merge:link}" _newline "{p 0 4}Words {it:that} wrap when the width is forty columns and no more.{p_end}"
display as error "raw {nosuch} {c -(}x{c )-}"
display _asis "{bf:raw}"
quietly log close
translate one.omcl one.txt
type one.txt
translate one.omcl narrow.txt, linesize(40)
type narrow.txt
translate one.omcl one.html, title(A & B) linesize(60)
type one.html
translate one.txt two.html
capture noisily translate one.omcl one.txt
translate one.omcl one.txt, replace
translate one.omcl same.out, translator(omcl2txt)
type same.out
* what is refused
capture noisily translate one.omcl same.xyz
capture noisily translate one.omcl same.ps, fontsize(99)
capture noisily translate one.omcl same.ps, pagesize(a9)
capture noisily translate one.omcl same.ps, lmargin(5) rmargin(5)
capture noisily translate one.omcl same.txt, fontsize(9)
capture noisily translate one.omcl same.txt, nosuch
capture noisily translate one.omcl same.txt, linesize(40
capture noisily translate nosuch.omcl same.txt
capture noisily translate one.omcl nosuch/same.txt
capture noisily translate one.omcl
capture noisily translate one.omcl one.omcl, replace translator(omcl2txt)
capture noisily translate one.omcl same.txt, translator(nosuch)
capture confirm file same.txt
display _rc
* what is set stays until it is reset
translator set omcl2txt linesize 50
translator query omcl2txt
translate one.omcl one.txt, replace
type one.txt
translator reset omcl2txt
translator query omcl2txt
translator query omcl2ps
capture noisily translator set omcl2txt linesize 9
capture noisily translator set omcl2txt pagesize a4
capture noisily translator query nosuch
transmap define .omcl .out omcl2txt
transmap query .omcl
translate one.omcl third.out
capture noisily transmap define omcl out omcl2txt
capture noisily transmap define .omcl .out nosuch
