display 1
