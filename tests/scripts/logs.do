* Logs: several at once, pause, append, both kinds, and what is refused.
quietly {
log using one.log
log using two, omcl name(second)
}
display "in both {bf:logs} {c -(}" "{raw}"
capture noisily log using one.log, name(third)
capture noisily log using other.log
quietly log off
display "only in the second"
quietly log on
quietly log close second
capture noisily log close second
capture noisily log off second
quietly log close
capture noisily log close
log query
display "in none"
type one.log
type two.omcl, asis
type two.omcl
capture noisily log using one.log
quietly log using one.log, append
display "appended"
quietly log close _all
type one.log
capture noisily log using nosuch/x.log
capture noisily log using x.log, replace append
capture noisily log using x.log, nosuch
capture noisily cmdlog close
type nosuch.txt
