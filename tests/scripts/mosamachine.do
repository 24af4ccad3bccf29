* The machine of the matrix language: what a failure looks like, how arguments travel, and
* what structs, classes, pointers and views do when they run.
mosa:
real scalar inner(real matrix a, real matrix b) return(sum(a*b))
real scalar outer(real scalar n) return(inner(J(1,n,1), J(2,1,1)))
void change(a) a = 7
function opt(a, | b, string scalar c) return((rows(b), cols(b), c==""))
numeric scalar root(pointer(function) scalar f, real scalar lo, real scalar hi)
{
	real scalar mid
	while (hi-lo > 1e-12) {
		mid = (lo+hi)/2
		if ((*f)(mid) > 0) hi = mid
		else               lo = mid
	}
	return(lo)
}
real scalar cube(real scalar x) return(x^3 - 2)
end
* tracebacks
capture noisily mosa: outer(3)
display _rc
capture noisily mosa: 1/(1,2)
capture noisily mosa: (1,1) & 1
capture noisily mosa: opt()
capture noisily mosa: (1,2)[3]
capture noisily mosa: inner("a", 1)
display _rc
capture noisily mosa: *NULL
capture noisily mosa: nosuchfunction(1)
capture noisily mosa: cube((1,2))
display _rc
* arguments are the caller's variables; missing ones have a shape
mosa: x = (1,2); change(x); x
mosa: opt(1)
mosa: opt(1, (1,2\3,4), "z")
mosa: root(&cube(), 0, 2)
* pointers and structs
mosa:
struct node {
	real scalar v
	pointer(struct node scalar) scalar next
}
pointer(struct node scalar) scalar pushed(real scalar v, pointer(struct node scalar) scalar rest)
{
	struct node scalar n
	n.v = v
	n.next = rest
	return(&n)
}
real scalar nodes(pointer(struct node scalar) scalar p)
{
	real scalar n
	for (n=0; p!=NULL; p = p->next) n++
	return(n)
}
void chain(real scalar n)
{
	pointer(struct node scalar) scalar p
	real scalar i
	p = NULL
	for (i=1; i<=n; i++) p = pushed(i, p)
	(p->v, p->next->v, nodes(p))
}
void copies()
{
	struct node scalar a, b
	a.v = 1
	b = a
	b.v = 2
	(a.v, b.v, a==b)
	b.v = 1
	a==b
}
end
mosa: chain(100000)
mosa: copies()
* classes: eldest first in, youngest first out, each once
mosa:
class animal {
	public:
		real scalar legs
		static real scalar count
		void new()
		void destroy()
		virtual string scalar says()
		string scalar twice()
}
void animal::new()
{
	legs = 4
	count = (count>=. ? 1 : count+1)
}
void animal::destroy() "end of animal " + strofreal(legs)
string scalar animal::says() return("...")
string scalar animal::twice() return(says() + says())
class bird extends animal {
	public:
		void new()
		void destroy()
		virtual string scalar says()
}
void bird::new() legs = 2
void bird::destroy() "end of bird"
string scalar bird::says() return("tweet")
void zoo()
{
	class animal scalar a
	class bird scalar b
	a.twice()
	b.twice()
	(a.legs, b.legs, a.count)
}
end
mosa: zoo()
* assignment copies members: two are built, two end, whatever is assigned between them
mosa:
struct cage {
	class animal scalar beast
	real scalar size
}
void move()
{
	struct cage scalar g, h
	g.beast.legs = 6
	h = g
	h.beast.legs = 8
	(g.beast.legs, h.beast.legs)
}
end
mosa: move()
* what an object points to is shared, what it holds is not
mosa:
class animal matrix herd()
{
	class animal matrix m
	m = animal(1,2)
	m[1,2].legs = 3
	(m[1,1].legs, m[1,2].legs)
	return(m)
}
end
mosa: m = herd()
mosa: k = m[1,2]
mosa: m = 0
mosa: k = 0
* deep recursion ends in words
mosa: real scalar down(real scalar n) return(n<=0 ? 0 : 1+down(n-1))
mosa: down(5000)
mosa: void forever() forever()
capture mosa: forever()
display _rc
* views
set obs 3
generate double x = _n
mosa: v = .
mosa: ov_view(v, ., "x")
mosa: v :* 2
mosa: v[2] = 20
list
mosa: v = v
mosa: v[1] = 99
display x[1]
* an instance outlives its dropped class
mosa: k = bird()
mosa drop bird()
mosa: k = 0
mosa: k
