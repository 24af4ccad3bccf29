error 111
display 1
