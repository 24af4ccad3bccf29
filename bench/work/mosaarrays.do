mosa
void fill(real scalar n)
{
	transmorphic A
	string scalar key
	real scalar i

	A = asarray_create()
	asarray_notfound(A, 0)
	for (i = 1; i <= n; i++) {
		key = "key" + strofreal(mod(i, 50000))
		asarray(A, key, asarray(A, key) + 1)
	}
}
fill(200000)
w = tokens(200000 * "word ")
t = tokeninit(" ", ("+", "="))
tokenset(t, 20000 * "a1+b2 = c3 ")
cols(tokengetall(t))
end
