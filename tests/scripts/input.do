input a str5 b double c
1 "one two" 1.5
2 two .a
. "" -3e5
4
end
list
input d
10
20
end
list
input
7 seven 8 9
end
list
capture noisily input a str5 b
display _rc
capture noisily input e
oops
end
display _rc
