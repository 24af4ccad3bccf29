* Every code that a statement of the matrix language can meet, with what is printed on its way
* out. The code of the line is what the block of commands around it sees.
set mosaoptimize on
mosa
real scalar two(real scalar a, real scalar b) return(a + b)
real scalar some(real scalar a, real scalar b, | real scalar c) return(args())
real rowvector arow(real rowvector v) return(v)
real colvector acol(real colvector v) return(v)
real vector avec(real vector v) return(v)
complex matrix acx(complex matrix v) return(v)
numeric matrix anum(numeric matrix v) return(v)
string matrix astr(string matrix v) return(v)
pointer matrix aptr(pointer matrix v) return(v)
transmorphic called(f()) return((*f)(2))
real scalar gives(transmorphic x) return(x)
struct pair {
    real scalar first, second
}
struct pair scalar apair(real scalar a)
{
    struct pair scalar p
    p.first = a
    return(p)
}
real scalar sumof(struct pair scalar p) return(p.first + p.second)
real scalar deep(real scalar n) return(deep(n + 1))
real scalar outer(real scalar n) return(middle(n))
real scalar middle(real scalar n) return(inner(n) + 1)
real scalar inner(real scalar n) return((1, 2)[n])
x = (1, 2 \ 3, 4)
none = NULL
end
set obs 3
generate u = _n

foreach line in "two(1)" "some(1)" "some(1, 2, 3, 4)" "two(1, (1, 2))" "two(1, x)" `"two(1, "a")"' ///
    "two(1, 2i)" "arow(1::2)" "acol(1..2)" "avec(x)" "acx(1)" `"anum("a")"' "astr(1)" "aptr(1)" ///
    "called(x)" "gives((1, 2))" `"gives("a")"' "sumof(apair(1))" "sumof(none)" "sumof(1)" ///
    "*none" "*1" "*(none, none)" "none > none" "none[1] < &x" "&x + 1" {
    display `"-> `line'"'
    capture noisily mosa: `line'
    display _rc
}

foreach line in "(1, 2) + 1" "1 - (1, 2)" "(1, 2) * (1, 2)" "(1, 2) / (1, 2)" "(1, 2) ^ 2" ///
    "(1, 2, 3) :+ (1 \ 2)" "x :* (1, 2, 3)" "(x, 1)" "(x \ 1)" "x & 1" `""a" | 1"' `""a" - "b""' ///
    `"-"a""' `"!"a""' `""a" * "b""' `""a" :- "b""' `"(1, "a")"' "(1, 2) .. 3" "1i :: 3" "0 .. 1e10" ///
    "x[3, 1]" "x[0, 1]" "x[1]" "(1, 2)[3]" `"x["a", 1]"' "x[x, 1]" "x[|3, 1|]" "x[|2, 2 \ 1, 1|]" ///
    "x[|1, 2, 3|]" "x[3, 3] = 1" "x[., 1] = (1, 2)" `"x[1, 1] = "a""' "x[|1, 1 \ 2, 2|] = 1" ///
    "x ? 1 : 2" `""ab" * ."' {
    display `"-> `line'"'
    capture noisily mosa: `line'
    display _rc
}

foreach line in "J(-1, 2, 0)" "J(1, 2, x)" "I(1.5, x)" "invsym(1::2)" "substr(1, 2)" "sqrt(&x)" ///
    "swap(x)" "nosuch(1)" "nosuch" "outer(1)" "outer(3)" "_error(3352)" ///
    `"_error(3360, "my own words")"' `"_error("only words")"' "_error(601)" "_error(3999)" ///
    "_error(10001)" "_error(.)" `"ovata("nosuch")"' `"_ovata("nosuch")"' "ov_view(v = ., 9, 1)" ///
    `"ov_view(v = ., ., "nosuch")"' "v = .; ov_view(v, ., 1); v[4, 1] = 1" "v++" "i_xtgm_cpyin(1)" ///
    "J(2147483647, 2147483647, 0)" "order(x, 9)" "_cholesky(x)" `"sprintf("%q", 1)"' {
    display `"-> `line'"'
    capture noisily mosa: `line'
    display _rc
}

* A stack that is full ends the statement and nothing else. Its traceback has a line a frame.
capture mosa: deep(1)
display _rc
mosa: two(2, 3)

* Structures and classes that do not fit one another.
mosa
struct endless {
    struct endless scalar more
}
class animal {
    public:
    real scalar legs
    virtual real scalar speed()
    real scalar walk()
}
real scalar animal::speed() return(legs)
real scalar animal::walk() return(legs)
real scalar of_animal()
{
    class animal scalar a
    return(a.walk())
}
class bird extends animal {
    public:
    real scalar speed()
}
real scalar bird::speed() return(100)
real scalar speed_of(class animal scalar a) return(a.speed())
real scalar of_bird()
{
    class bird scalar b
    b.legs = 2
    return(speed_of(b))
}
real scalar endlessly()
{
    struct endless scalar e
    return(1)
}
class round {
    public:
    class round scalar again
}
real scalar roundly()
{
    class round scalar r
    return(1)
}
real scalar not_of_bird(transmorphic x) return(speed_of(x))
end
foreach line in "of_bird()" "endlessly()" "roundly()" "sumof(bird())" "speed_of(bird())" "bird().legs" "issymmetric(NULL)" ///
    "ov_view(v = ., ., 1i)" "ov_view(v = ., (1, 2, 3), 1)" "substr((1, 2), 1)" "tokens(1)" "not_of_bird(1)" "not_of_bird(apair(1))" ///
    "ov_viewvars(x)" "_collate(x, (1, 1))" "strofreal(&x)" "length(two)" "invsym((1, . \ ., 1))" ///
    "apair(1) + 1" "rows(apair(1), 1)" "(&two())->first" "*&two()" "(*&x)(1)" "x()" "two" {
    display `"-> `line'"'
    capture noisily mosa: `line'
    display _rc
}

* A child runs only with the parent it was compiled with.
mosa drop animal() animal::speed() animal::walk()
mosa
class animal {
    public:
    real scalar legs, wings
    virtual real scalar speed()
    real scalar walk()
}
real scalar animal::speed() return(legs)
real scalar animal::walk() return(legs)
end
capture noisily mosa: of_animal()
capture noisily mosa: of_bird()
display _rc
mosa clear
mosa
class animal {
    public:
    real scalar legs
}
class bird extends animal {
    public:
    real scalar wings
}
end
mosa drop animal()
mosa
class animal {
    public:
    real scalar legs, tail
}
end
capture noisily mosa: b = bird()
display _rc

* Line numbers in tracebacks.
set mosalnum on
mosa
real scalar third(real rowvector v)
{
    real scalar i

    i = 3
    return(v[i])
}
third((1, 2, 3))
end
capture noisily mosa: third((1, 2))
set mosalnum off

* A void function may not return a value that only comes at run time; factors want numbers.
mosa
void nothing(transmorphic x) return(x)
p = .
end
capture noisily mosa: nothing(1)
display _rc
capture noisily mosa: _lud2_la((1, . \ 2, 3), p)
display _rc

* What is no pointer, and the words of codes that functions of a library or damaged code raise.
mosa
transmorphic at(transmorphic x) return(*x)
end
capture noisily mosa: at(1)
display _rc
foreach code in 3011 3259 3353 3901 3930 3995 {
    capture noisily mosa: _error(`code')
    display _rc
}
