use data20
