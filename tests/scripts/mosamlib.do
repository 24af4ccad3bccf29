* libraries of functions: made, added to, searched, described, refused
mosa
real scalar twice(real scalar x) return(2*x)
real scalar thrice(real scalar x) return(3*x)
string scalar hello(| string scalar who) return("hello " + (args() ? who : "you"))
struct pair {
	real scalar	a, b
}
struct pair scalar makepair(real scalar a, real scalar b)
{
	struct pair scalar	p

	p.a = a
	p.b = b
	return(p)
}
class account {
	private real scalar	total
	static real scalar	made
	void			new(), add()
	virtual string scalar	kind()
	real scalar		get()
}
void account::new()
{
	made = (made >= . ? 1 : made + 1)
	total = 0
}
void account::add(real scalar x) total = total + x
string scalar account::kind() return("plain")
real scalar account::get() return(total)
class savings extends account {
	virtual string scalar	kind()
	void			interest()
}
string scalar savings::kind() return("savings")
void savings::interest(real scalar rate) add(get()*rate)
x = 1
end

* names, options and places
capture noisily mosa mlib create mine
capture noisily mosa mlib create lmosamine
capture noisily mosa mlib create "l mine"
capture noisily mosa mlib create
capture noisily mosa mlib create lmine, size(1)
capture noisily mosa mlib create lmine, size(2049)
capture noisily mosa mlib create lmine, color(red)
capture noisily mosa mlib create lmine, dir(nowhere)
mosa mlib create lmine, size(12)
capture noisily mosa mlib create lmine
mosa mlib create lmine, replace size(12)
capture noisily mosa mlib frobnicate
capture noisily mosa mlib add lother twice()
capture noisily mosa mlib add lmine
capture noisily mosa mlib add lmine none()
capture noisily mosa mlib add lmine twice() x
capture noisily mosa mlib add lmine x
mosa mlib add lmine twice() t*()
capture noisily mosa mlib add lmine twice() hello()
mosa mlib add lmine account::*() pair()
mosa describe using lmine
mosa mlib create lmine, replace
mosa mlib add lmine *()
mosa describe using lmine
capture noisily mosa describe using lnone

* a class that lacks a function
mosa
class half {
	void	done(), todo()
	virtual real scalar	also()
}
void half::done() printf("done\n")
end
capture noisily mosa mlib add lmine half(), complete
mosa mlib add lmine half()
capture noisily mosa mosave half(), complete
capture noisily mosa mosave twice() thrice()
capture noisily mosa mosave x
mosa mosave hello(), dir(.)
capture noisily mosa mosave hello()
mosa mosave hello(), replace

* everything is forgotten and comes back when it is called
mosa clear
capture noisily mosa: thrice(2)
mosa mlib index
mosa
twice(thrice(7))
hello("there")
p = makepair(3, 4)
real scalar bank()
{
	class savings scalar	s
	class account vector	a
	pointer(class account scalar) scalar p

	a = account(2)
	s.add(100)
	s.interest(0.5)
	a[2].add(7)
	p = &s
	printf("%s %s %g\n", a[1].kind(), p->kind(), s.made)
	return(s.get() + a[2].get())
}
bank()
end
mosa which twice()
mosa which thrice
mosa which bank()
mosa which savings::kind()
capture noisily mosa which savings::get()
mosa which abs()
capture noisily mosa which none()
mosa describe *()
mosa memory
mosa drop twice()
mosa: twice(10)

* another library of the same names behind it is not asked
mosa clear
mosa
real scalar twice(real scalar x) return(-2*x)
real scalar only(real scalar x) return(twice(x))
end
mkdir lib
mosa mlib create lzother, dir(lib)
mosa mlib add lzother *(), dir(lib)
capture noisily mosa mlib add lzother twice(), dir(lib)
mosa clear
quietly adopath + lib
mosa mlib index
mosa: only(5)
mosa mlib query
set mosalibs "lzother;lmine"
mosa clear
mosa: (only(5), thrice(1))
mosa: hello()

* files that are no libraries
tempname fh
file open `fh' using lbad.mlib, write
file write `fh' "not a library at all"
file close `fh'
capture noisily mosa describe using lbad
capture noisily mosa mlib add lbad twice()
capture noisily mosa mosave twice(), dir(nowhere)
mosa mlib index
mosa: hello()
