use data20
save data20b, replace
