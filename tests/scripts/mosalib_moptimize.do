* Maximum likelihood with equations. What closed forms, sums over observations and other kinds of
* evaluators give is compared; a line of ones is what is wanted.
set seed 17
set obs 400
generate x1 = rnormal()
generate x2 = runiform()
generate g = ceil(_n / 8)
generate y = 1 + 2 * x1 - x2 + 1.5 * rnormal()
generate c = rpoisson(exp(.3 + .5 * x1))
generate d = .4 * x1 - .6 * x2 + ln(runiform() / (1 - runiform())) > 0
generate w = 1 + mod(_n, 3)
generate t = .5 + runiform()
mosa:
void lf_normal(transmorphic M, real rowvector b, real colvector lnf)
{
	lnf = lnnormalden(moptimize_util_depvar(M, 1), moptimize_util_xb(M, b, 1),
		exp(moptimize_util_xb(M, b, 2)))
}
void lf_sigma(transmorphic M, real rowvector b, real colvector lnf)
{
	lnf = lnnormalden(moptimize_util_depvar(M, 1), moptimize_util_xb(M, b, 1),
		moptimize_util_xb(M, b, 2))
}
void lf_poisson(transmorphic M, real rowvector b, real colvector lnf)
{
	real colvector xb
	xb = moptimize_util_xb(M, b, 1)
	lnf = moptimize_util_depvar(M, 1) :* xb - exp(xb) - lnfactorial(moptimize_util_depvar(M, 1))
}
// the logit in every kind
void lf_logit(transmorphic M, real rowvector b, real colvector lnf)
{
	transmorphic s, h
	s = h = .
	lnf = .
	(void) _mopt_logit_e2(0, moptimize_util_depvar(M, 1), moptimize_util_xb(M, b, 1), lnf, s, h)
}
void lf2_logit(transmorphic M, real scalar todo, real rowvector b, real colvector lnf,
	real matrix S, real matrix H)
{
	transmorphic h
	h = .
	(void) _mopt_logit_e2(2, moptimize_util_depvar(M, 1), moptimize_util_xb(M, b, 1), lnf, S, h)
	if (todo > 1) H = moptimize_util_matsum(M, 1, 1, h)
}
void d2_logit(transmorphic M, real scalar todo, real rowvector b, real scalar f,
	real rowvector g, real matrix H)
{
	transmorphic l, s, h
	l = s = h = .
	(void) _mopt_logit_e2(2, moptimize_util_depvar(M, 1), moptimize_util_xb(M, b, 1), l, s, h)
	f = moptimize_util_sum(M, l)
	if (todo > 0) g = moptimize_util_vecsum(M, 1, s, f)
	if (todo > 1) H = moptimize_util_matsum(M, 1, 1, h, f)
}
void gf1_logit(transmorphic M, real scalar todo, real rowvector b, real colvector v,
	real matrix S, real matrix H)
{
	transmorphic s, h
	s = h = .
	(void) _mopt_logit_e2(2, moptimize_util_depvar(M, 1), moptimize_util_xb(M, b, 1), v, s, h)
	if (todo > 0) S = s :* (moptimize_util_indepvars(M, 1), J(rows(s), 1, 1))
}
transmorphic setup(string scalar type, pointer(function) scalar f, string scalar y)
{
	transmorphic M
	M = moptimize_init()
	moptimize_init_evaluatortype(M, type)
	moptimize_init_evaluator(M, f)
	moptimize_init_depvar(M, 1, y)
	moptimize_init_eq_indepvars(M, 1, "x1 x2")
	moptimize_init_tracelevel(M, "none")
	return(M)
}

// linear regression: least squares, its variance over n, half of 1 / n for ln sigma
Z = (ov_data(., ("x1", "x2")), J(400, 1, 1))
y = ov_data(., "y")
ls = invsym(cross(Z, Z)) * cross(Z, y)
s2 = sum((y - Z * ls) :^ 2) / 400
M = setup("lf", &lf_normal(), "y")
moptimize_init_eq_indepvars(M, 2, "")
moptimize(M)
mreldif(moptimize_result_coefs(M), (ls', ln(s2) / 2)) < 1e-7
mreldif(moptimize_result_V(M), blockdiag(s2 * invsym(cross(Z, Z)), 1 / 800)) < 1e-7
reldif(moptimize_result_value(M), -200 * (ln(2 * arg(-1) * s2) + 1)) < 1e-10
(moptimize_result_converged(M), moptimize_result_errorcode(M))
moptimize_result_colstripe(M)
moptimize_result_coefs(M, 2) == moptimize_result_coefs(M)[4]
// scores by hand: (y - xb) / s2, its square / s2 - 1
e = y - Z * ls
mreldif(moptimize_result_scores(M), (e / s2, e :^ 2 / s2 :- 1)) < 1e-5
S = (e / s2 :* Z, e :^ 2 / s2 :- 1)
V = blockdiag(s2 * invsym(cross(Z, Z)), 1 / 800)
mreldif(moptimize_result_V_opg(M), invsym(cross(S, S))) < 1e-5
mreldif(moptimize_result_V_robust(M), V * cross(S, S) * V * 400 / 399) < 1e-5
moptimize_init_cluster(M, "g")
moptimize(M)
moptimize_result_Vtype(M)
info = panelsetup(ov_data(., "g"), 1)
U = J(0, 4, .)
for (i = 1; i <= rows(info); i++) U = (U \ colsum(panelsubmatrix(S, i, info)))
mreldif(moptimize_result_V(M), V * cross(U, U) * V * 50 / 49) < 1e-5

// sigma as it is: 0 is no start, one is looked for; with the search off it says so
M = setup("lf", &lf_sigma(), "y")
moptimize_init_eq_indepvars(M, 2, "")
moptimize(M)
reldif(moptimize_result_coefs(M)[4], sqrt(s2)) < 1e-6
moptimize_init_search(M, "off")
(_moptimize(M), moptimize_result_returncode(M))

// logit: seven ways to one result
M = setup("lf", &lf_logit(), "d")
moptimize(M)
b = moptimize_result_coefs(M)
V = moptimize_result_V(M)
R = moptimize_result_V_robust(M)
f = g = H = .
_mopt_logit_d2(2, ov_data(., "d"), ov_data(., ("x1", "x2")), b, f, g, H)
(max(abs(g)) < 1e-4, mreldif(V, invsym(-H)) < 1e-6, reldif(f, moptimize_result_value(M)) < 1e-12)
real rowvector same_as(transmorphic M, real rowvector b, real matrix V)
{
	moptimize(M)
	return((mreldif(moptimize_result_coefs(M), b) < 1e-5, mreldif(moptimize_result_V(M, "oim"), V) < 1e-4))
}
same_as(setup("lf2", &lf2_logit(), "d"), b, V)
same_as(setup("lf1", &lf2_logit(), "d"), b, V)
same_as(setup("lf0", &lf2_logit(), "d"), b, V)
same_as(setup("d2", &d2_logit(), "d"), b, V)
same_as(setup("d1", &d2_logit(), "d"), b, V)
same_as(setup("d0", &d2_logit(), "d"), b, V)
same_as(setup("gf1", &gf1_logit(), "d"), b, V)
same_as(setup("gf0", &gf1_logit(), "d"), b, V)
techniques = ("bfgs", "dfp", "bhhh", "bhhh 2 nr 10")
for (i = 1; i <= 4; i++) {
	M = setup("lf2", &lf2_logit(), "d")
	moptimize_init_technique(M, techniques[i])
	moptimize(M)
	(mreldif(moptimize_result_coefs(M), b) < 1e-4, mreldif(moptimize_result_V(M, "oim"), V) < 1e-4)
}
M = setup("gf1", &gf1_logit(), "d")
moptimize(M)
mreldif(moptimize_result_V_robust(M), R) < 1e-4

// frequencies are rows repeated; sampling weights scale without them
w = ov_data(., "w")
M = setup("lf2", &lf2_logit(), "d")
moptimize_init_weight(M, "w")
moptimize(M)
D = ov_data(., ("d", "x1", "x2"))
E = (D \ select(D, w :> 1) \ select(D, w :> 2))
N = setup("lf2", &lf2_logit(), "d")
moptimize_init_depvar(N, 1, E[., 1])
moptimize_init_eq_indepvars(N, 1, E[., (2, 3)])
moptimize(N)
mreldif(moptimize_result_coefs(M), moptimize_result_coefs(N)) < 1e-8
mreldif(moptimize_result_V(M), moptimize_result_V(N)) < 1e-8
mreldif(moptimize_result_V_robust(M), moptimize_result_V_robust(N)) < 1e-8
V = moptimize_result_V(M)
S = moptimize_result_scores(M) :* w :* (D[., (2, 3)], J(400, 1, 1))
moptimize_init_weighttype(M, "pweight")
moptimize(M)
mreldif(moptimize_result_V(M), V * cross(S, S) * V * 400 / 399) < 1e-6
moptimize_result_Vtype(M)

// counts with exposure: offset of its logarithm; a constant alone has a closed form
M = setup("lf", &lf_poisson(), "c")
moptimize_init_eq_indepvars(M, 1, "")
moptimize_init_eq_exposure(M, 1, "t")
moptimize(M)
reldif(moptimize_result_coefs(M), ln(sum(ov_data(., "c")) / sum(ov_data(., "t")))) < 1e-8

// x1 = -x2 by constraint: a regression on the difference
M = setup("lf", &lf_normal(), "y")
moptimize_init_eq_indepvars(M, 2, "")
moptimize_init_constraints(M, (1, 1, 0, 0, 0))
moptimize(M)
z = (Z[., 1] - Z[., 2], Z[., 3])
r = (invsym(cross(z, z)) * cross(z, y))'
mreldif(moptimize_result_coefs(M)[1..3], (r[1], -r[1], r[2])) < 1e-6

// groups: the square of sums, a taken where the group ends
M = setup("lf", &lf_normal(), "y")
moptimize_init_eq_indepvars(M, 2, "")
moptimize_init_by(M, "g")
(void) _moptimize_evaluate(M)
a = ov_data(., "g")
B = J(3, 3, 0)
for (i = 1; i <= rows(info); i++) {
	u = colsum(panelsubmatrix(e :* Z, i, info))
	B = B + i * u'u
}
mreldif(moptimize_util_matbysum(M, 1, a, e), B) < 1e-12
(moptimize_util_eq_indices(M, 1), moptimize_util_eq_indices(M, 1, 1))
end
capture noisily mosa: moptimize_init_evaluatortype(M, "d3")
capture noisily mosa: moptimize(moptimize_init())
capture noisily mosa: moptimize_result_V(setup("lf", &lf_normal(), "y"))
capture noisily mosa: moptimize_init_eq_coefs(M, 1, (1, 2)); moptimize(M)

* A command made of it: results posted, shown, and used.
program define mylogit, eclass
	syntax varlist [if] [, Cluster(varname)]
	marksample touse
	gettoken y x : varlist
	mosa: runlogit("`y'", "`x'", "`touse'", "`cluster'")
end
mosa:
void runlogit(string scalar y, string scalar x, string scalar touse, string scalar cluster)
{
	transmorphic M
	M = moptimize_init()
	moptimize_init_evaluator(M, &lf2_logit())
	moptimize_init_evaluatortype(M, "lf2")
	moptimize_init_touse(M, touse)
	moptimize_init_depvar(M, 1, y)
	moptimize_init_eq_indepvars(M, 1, x)
	if (cluster != "") moptimize_init_cluster(M, cluster)
	moptimize(M)
	moptimize_result_display(M)
}
end
mylogit d x1 x2 if w < 3
display e(N), e(k), e(k_eq), e(rank), e(converged), "`e(vce)'", "`e(depvar)'"
test x1
count if e(sample)
* factor variables: bases stay at 0, as least squares have them
quietly regress y x1 i.w##c.x2
mosa:
M = setup("lf", &lf_normal(), "y")
moptimize_init_eq_indepvars(M, 1, "x1 i.w##c.x2")
moptimize_init_eq_indepvars(M, 2, "")
moptimize_init_eq_name(M, 1, "mu")
moptimize(M)
moptimize_result_colstripe(M, 1)
b = ov_matrix("e(b)")
mreldif(b, moptimize_result_coefs(M, 1)) < 1e-6
mreldif(moptimize_result_V(M)[|1, 1 \ 9, 9|], ov_matrix("e(V)") * 393 / 400) < 1e-6
end
mylogit d x1 x2, cluster(g)
display e(N), e(N_clust), "`e(vce)'"
