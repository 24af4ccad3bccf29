use data20
sort s d1
