* Points of low discrepancy, normal probabilities by simulation, chi-squared variates.
mosa:
halton(4, 3)
// number 1000 of each base: 1000 is 1111101000, 1101001 and 13000 there
mreldif(halton(1, 3, 1000), (95 / 1024, 1/3 + 1/3^4 + 1/3^6 + 1/3^7, 3/5^4 + 1/5^5)) < 1e-15
hammersley(3, 2)
X = J(2, 2, 0)
_halton(X, 3)
X
halton(0, 2)
S = ghk_init(2000)
(ghk_init_method(S), strofreal(ghk_query_npts(S)))
// orthants: 1/4 + asin(r) / (2 pi) for two, 1/8 + (three asins) / (4 pi) for three
V = (1, .5, .3 \ .5, 1, -.2 \ .3, -.2, 1)
pi = arg(-1)
abs(ghk(S, (0, 0), V[|1, 1 \ 2, 2|]) - 1/4 - asinr(.5) / (2 * pi)) < 5e-4
abs(ghk(S, (0, 0, 0), V) - 1/8 - (asinr(.5) + asinr(.3) + asinr(-.2)) / (4 * pi)) < 2e-4
ghk_init_antithetics(S, 1)
ghk_init_pivot(S, 0)
abs(ghk(S, (0, 0, 0), V) - 1/8 - (asinr(.5) + asinr(.3) + asinr(-.2)) / (4 * pi)) < 2e-4
d = e = .
p = ghk(S, (.5, -1, 1 \ 1, ., 0), V, d, e)
h = 1e-5
q = (ghk(S, (.5 + h, -1, 1 \ 1 + h, ., 0), V) - ghk(S, (.5 - h, -1, 1 \ 1 - h, ., 0), V)) / (2 * h)
mreldif(d[., 1], q) < 1e-8
d[2, 2]
ghk_init_method(S, "random")
rseed(5)
abs(ghk(S, (0, 0), V[|1, 1 \ 2, 2|]) - 1/4 - asinr(.5) / (2 * pi)) < 1e-2
// the draws stay until something about them is set
ghk(S, (0, 1, 2), V) == ghk(S, (0, 1, 2), V)
ghk_init_method(S, "ghalton")
abs(ghk(S, (0, 0), V[|1, 1 \ 2, 2|]) - 1/4 - asinr(.5) / (2 * pi)) < 1e-3
ghk(S, 1.5, 4) - normal(.75) < 1e-15
ghk(S, (1, 2), (1, 2 \ 2, 1))
x = rchi2(20000, 1, 3)
(abs(sum(x) / 20000 - 3) < .1, abs(sum((x :- 3):^2) / 20000 - 6) < .5)
end
capture noisily mosa: ghk_init_method(S, "magic")
capture noisily mosa: ghk(S, (1, 2), 1)
capture noisily mosa: halton(2, 0)
