* ten million uniform and ten million normal draws
set obs 10000000
set seed 1
generate double u = runiform()
generate double z = rnormal()
