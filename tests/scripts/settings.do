* set checks kind and range, c() reads back, and a refusal changes nothing.
display c(type) " " c(level) " " c(linesize) " " c(more)
set type double
set level 90
display c(type) " " c(level)
capture noisily set type doub
capture noisily set level 5
capture noisily set linesize 39
capture noisily set linesize 256
capture noisily set linesize x
capture noisily set nosuch 5
capture noisily set trace
capture noisily set more on, permanently now
capture noisily set linesize 80, permanently
display c(type) " " c(level) " " c(linesize)
set linesize 40
display "a line of forty-five characters, wrapped once"
set linesize 79
set dp comma
display 1.5
set dp period
display 1.5
set seed 123456789
display c(seed)
set seed -5
display c(seed)
local kept = c(seed)
display %12.10f runiform()
set seed `kept'
display %12.10f runiform()
capture noisily set seed
capture noisily set seed abc
capture noisily set seed abcdefghijklmnopqrstuvwxyz
capture noisily set seed X0
capture noisily set seed 1 2
capture noisily set seed 2147483648
display c(seed) == "`kept'"
set cformat %7.3f
capture noisily set cformat %7q
display c(cformat)
set cformat
display "|" c(cformat) "|"
query mosa
version 11.2: set seed 1
display c(version_rng)
display c(nosuch)
