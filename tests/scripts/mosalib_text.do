* the library's functions of texts, tokens and keyed arrays
mosa
// ---- tokens
t = tokeninit(" ", ("+", "+="), (char((34, 34)), "()"))
tokenset(t, "a+=b (c d) e")
(tokenget(t), tokenpeek(t), tokenget(t), tokenrest(t))
tokenoffset(t)
tokengetall(t)
(tokenget(t) == "", tokenpeek(t) == "", tokenrest(t) == "")
tokenoffset(t, 7)
tokengetall(t)
tokenwchars(t, ",")
tokenset(t, "a b,+c")
tokengetall(t)
tokenpchars(t, "b")
tokenqchars(t, "<>")
tokenset(t, "a b,+c<,>")
tokengetall(t)
(tokenwchars(t), tokenpchars(t), tokenqchars(t))
tokenallownum(t, 1)
tokenallowhex(t, 1)
(tokenallownum(t), tokenallowhex(t))
tokenpchars(t, "-")
tokenset(t, "1e-3-2,1.8x-1-x-1")
tokengetall(t)
t = tokeninitovata()
tokenset(t, "if x>=1.5e-3 & y==" + char(34) + "a b" + char(34) + " list" + char(9) + "in 1/2")
invtokens(tokengetall(t), "|")
tokenset(t, "one")
tokengetall(t)
tokenset(t, "")
cols(tokengetall(t))
// a great many
tokenset(t, 10000 * "word, ")
cols(tokengetall(t))

// ---- keyed arrays
A = asarray_create()
asarray(A, "bill", 5)
asarray(A, "jane", (1, 2))
asarray(A, "", "empty key")
(asarray(A, "bill"), asarray(A, "jane"))
asarray(A, "")
asarray(A, "bill", "changed")
(asarray(A, "bill"), strofreal(asarray_elements(A)))
sort(asarray_keys(A), 1)
asarray(A, "nobody")
asarray_notfound(A, 0)
asarray(A, "nobody")
asarray_remove(A, "bill")
asarray_remove(A, "nobody")
(asarray_contains(A, "bill"), asarray_contains(A, "jane"), asarray_elements(A))
x = (1, 2)
asarray(A, "copy", x)
x[1] = 99
asarray(A, "copy")
B = asarray_create("real", 2, 5)
for (i = 1; i <= 3000; i++) asarray(B, (i, -i), i ^ 2)
(asarray(B, (77, -77)), asarray_elements(B), asarray_contains(B, (77, 77)))
for (i = 1; i <= 2990; i++) asarray_remove(B, (i, -i))
for (i = 1; i <= 50; i++) asarray(B, (i, i), i)
sum = 0
for (p = asarray_first(B); p != NULL; p = asarray_next(B, p)) {
	if (asarray_key(B, p)[1] == 25) asarray_contents(B, p, 1000)
	sum = sum + asarray_contents(B, p)
}
sum == sum((2991..3000) :^ 2) + sum(1..50) + 975
(asarray(B, (25, 25)), asarray_elements(B), rows(asarray_keys(B)))
Z = asarray_create("complex")
asarray(Z, 1i, "i")
asarray(Z, C(1), "one")
(asarray(Z, 1i), asarray(Z, C(1)))
P = asarray_create("pointer")
asarray(P, &A, "A")
asarray(P, &B, "B")
asarray(P, &A)
// against plain vectors, kept and removed at random
real scalar differences(real scalar turns, real scalar keys)
{
	transmorphic A
	real colvector value
	real scalar i, k, wrong
	pointer scalar p

	A = asarray_create("real", 1, 5, .9, 1.1)
	asarray_notfound(A, .)
	value = J(keys, 1, .)
	wrong = 0
	for (i = 1; i <= turns; i++) {
		k = ceil(runiform(1, 1) * keys)
		if (runiform(1, 1) < (mod(i, 4000) < 2000 ? .7 : .2)) {
			value[k] = i
			asarray(A, k, i)
		}
		else {
			value[k] = .
			asarray_remove(A, k)
		}
		k = ceil(runiform(1, 1) * keys)
		wrong = wrong + (asarray(A, k) != value[k]) + (asarray_contains(A, k) != (value[k] < .))
		wrong = wrong + (asarray_elements(A) != nonmissing(value))
	}
	for (p = asarray_first(A); p != NULL; p = asarray_next(A, p)) {
		wrong = wrong + (value[asarray_key(A, p)] != asarray_contents(A, p))
	}
	return(wrong + (sort(asarray_keys(A), 1) != select(1::keys, value :< .)))
}
rseed(7)
(differences(8000, 300), differences(2000, 3))
E = asarray_create("real")
(rows(asarray_keys(E)), cols(asarray_keys(E)), asarray_first(E) == NULL)
end
foreach wrong in asarray(A,3) asarray(B,3) asarray_create("odd") asarray_create("real",0) {
    display `"`wrong'"'
    capture noisily mosa: `wrong'
}
mosa
// ---- texts
(invtokens(("a", "b", "c")), invtokens(("a", "b"), "-"), invtokens(J(1, 0, "")), invtokens("x"))
invtokens(J(1, 7, "ab"), "") == 7 * "ab"
(strdup("ab", (0, 2)), strpad(("a", "bbb"), 3), strpad("a", -3), strpad("abcd", 2))
(strtoreal(("1", "x", ".", " 2e3 ")), strrpos("abcabc", ("bc", "z", "")))
(inbase(2, (10, -.625, .)), inbase(16, 255.1, 3), inbase(62, 61))
e = .
inbase(10, (.123, -2.5), 2, e)
all(reldif(e, (.003, -0)) :< 1e-15)
(frombase(16, ("ff", "FF.8", "-10", "zz", "", "1.2.3")), frombase(62, "aA"))
frombase(62, inbase(62, 123456789)) == 123456789
end
