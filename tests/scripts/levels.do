global data : environment TESTDATA
do "$data/levels_body", nostop
