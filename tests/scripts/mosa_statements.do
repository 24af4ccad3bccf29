set mosaoptimize on
* statements of the matrix language, one after the other
mosa:
// values and joins
x = 3; y = x + 4
(x, y)
x = y = 2
(x \ y)
1..4
3::1
("ab", "cd") + ("e", "f")
3 + 2i
NULL
/* a comment
   over lines */ x
a = (1, 2, ///
     3, 4)
a
a[2] ; a[2] = 20 ; a
m = (1,2\3,4)
m[1,]
m[,2]
m[|1,2\2,2|]
m[2,.] = (7,8)
m
m'm
i = 5
i++
i
j = i++ + 1
(i, j)
(void) rows(m)
if (i==7) "seven"; else "not seven"
if (i==8) "eight"; else "not eight"
for (k=1; k<=3; k++) k
while (k > 2) k--
k
do { k = k + 10 } while (k < 30)
k
{
    n = 0
again:
    n++
    if (n < 3) goto again
    n
    for (k=1; k<=10; k++) {
        if (k==2) continue
        if (k==5) break
        k
    }
done:
}
n ? "yes" : "no"
n==0 ? "zero" : n==3 ? "three" : "other"
version 10.1
p = &m
(*p)[1,1] = 100
m
*p = 5
m
end
mosa: m + 1
mosa m + 2
mosa:
real scalar fib(real scalar n)
{
    if (n <= 2) return(1)
    return(fib(n-1) + fib(n-2))
}
fib(20)
void show(string scalar s, | real scalar times)
{
    real scalar i

    if (args()==1) times = 1
    for (i=1; i<=times; i++) printf("%s\n", s)
}
show("once")
show("twice", 2)
end
capture noisily mosa: show()
display _rc
mosa:
function noreturn(x) x = x*2
z = 4
noreturn(z)
z
real matrix late(x) {
    external real scalar counter
    pragma unused x
    counter = counter>=. ? 1 : counter + 1
    return(counter)
}
late(1)
late(1)
counter
pointer(real scalar function) scalar pick(real scalar k)
{
    return(k==1 ? &up() : &down())
}
real scalar up(x) return(x + 1)
real scalar down(x) return(x - 1)
(*pick(1))(10)
(*pick(2))(10)
real colvector wrong() return((1,2))
end
capture noisily mosa: wrong()
capture noisily mosa: show(1)
display _rc
* what is open reads on to the next line, and the file ends
mosa: x = (1,
