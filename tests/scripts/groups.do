global data : environment TESTDATA
do "$data/groups_body", nostop
