global data : environment TESTDATA
do "$data/prefixes_body", nostop
