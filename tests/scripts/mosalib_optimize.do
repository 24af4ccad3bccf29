* Derivatives, optimization and systems of equations: problems whose answers are known.
version 12.1
set mosaoptimize on
mosa
real scalar near(numeric matrix a, numeric matrix b, real scalar tol)
{
    if (rows(a) != rows(b) | cols(a) != cols(b)) return(-1)
    return(norm(a - b, 0) <= tol * (1 + norm(b, 0)))
}

// Derivatives of a scalar, a column and a row
void wave(real rowvector p, v) v = exp(p[1]) * sin(p[2]) + p[1] * p[2]^3
void growth(real rowvector p, real colvector x, v) v = exp(p[1] :* x) :+ p[2]
void three(real rowvector p, v) v = (p[1] * p[2], p[1]^2, sin(p[2]))
D = deriv_init()
deriv_init_evaluator(D, &wave())
deriv_init_params(D, (1, 2))
near(deriv(D, 0), exp(1) * sin(2) + 8, 1e-15)
near(deriv(D, 1), (exp(1) * sin(2) + 8, exp(1) * cos(2) + 12), 1e-11)
near(deriv(D, 2), (exp(1) * sin(2), exp(1) * cos(2) + 12 \ exp(1) * cos(2) + 12, 12 - exp(1) * sin(2)), 1e-9)
deriv_init_params(D, (0, 0))
(near(deriv(D, 1), (0, 1), 1e-11), near(deriv(D, 2), (0, 1 \ 1, 0), 1e-8))
deriv_init_params(D, (300, 1e5))
near(deriv(D, 1) / exp(300), (sin(1e5), cos(1e5)), 1e-4)
x = (1 \ 2 \ 3)
E = deriv_init()
deriv_init_evaluator(E, &growth())
deriv_init_evaluatortype(E, "v")
deriv_init_argument(E, 1, x)
deriv_init_params(E, (.5, 1))
(near(deriv(E, 1), (sum(x :* exp(.5 * x)), 3), 1e-11), near(deriv_result_scores(E), (x :* exp(.5 * x), J(3, 1, 1)), 1e-11))
near(deriv(E, 2), (sum(x :^ 2 :* exp(.5 * x)), 0 \ 0, 0), 1e-9)
deriv_init_weights(E, (1 \ 2 \ 1))
near(deriv(E, 1), (sum((1 \ 4 \ 3) :* exp(.5 * x)), 4), 1e-11)
G = deriv_init()
deriv_init_evaluator(G, &three())
deriv_init_evaluatortype(G, "t")
deriv_init_params(G, (2, 3))
near(deriv(G, 1), (3, 2 \ 4, 0 \ 0, cos(3)), 1e-11)
(deriv_init_evaluatortype(G), deriv_init_search(G))
_deriv(G, 2)
deriv_result_errortext(G)
deriv_result_returncode(G)

// The banana, by every way to it
void banana(todo, p, v, g, H)
{
    v = 100 * (p[2] - p[1]^2)^2 + (1 - p[1])^2
    if (todo == 0) return
    g = (-400 * p[1] * (p[2] - p[1]^2) - 2 * (1 - p[1]), 200 * (p[2] - p[1]^2))
    if (todo == 1) return
    H = (1200 * p[1]^2 - 400 * p[2] + 2, -400 * p[1] \ -400 * p[1], 200)
}
void by(string scalar type, string scalar technique, real scalar tol)
{
    transmorphic S
    real rowvector p
    S = optimize_init()
    optimize_init_evaluator(S, &banana())
    optimize_init_evaluatortype(S, type)
    optimize_init_technique(S, technique)
    optimize_init_which(S, "min")
    optimize_init_params(S, (-1.2, 1))
    optimize_init_tracelevel(S, "none")
    p = optimize(S)
    (near(p, (1, 1), tol), optimize_result_converged(S), near(optimize_result_Hessian(S), (802, -400 \ -400, 200), 1e-3), optimize_result_iterations(S) > 5, near(optimize_result_gradient(S), (0, 0), .01))
}
by("d2", "nr", 1e-10)
by("d1", "nr", 1e-10)
by("d0", "nr", 1e-9)
by("d1", "bfgs", 1e-4)
by("d0", "bfgs", 1e-4)
by("d1", "dfp", 1e-4)
by("d0", "dfp", 1e-4)
by("d0", "nm", 1e-5)
by("d2", "bfgs 3 nr 2", 1e-3)
S = optimize_init()
optimize_init_evaluator(S, &banana())
optimize_init_which(S, "min")
optimize_init_singularHmethod(S, "hybrid")
optimize_init_evaluatortype(S, "d2")
optimize_init_params(S, (0, 0))
// On the line p1 + p2 = 1 the slope along (1, -1) is 0.
optimize_init_constraints(S, (1, 1, 1))
p = optimize(S)
g = optimize_result_gradient(S)
(abs(p[1] + p[2] - 1) < 1e-14, optimize_result_converged(S))
void slope(p, v, g, H) banana(1, p, v, g, H)
v = g = H = .
slope(p, v, g, H)
abs(g[1] - g[2]) < 1e-4
V = optimize_result_V(S)
(abs(V[1, 1] + V[1, 2]) < 1e-15, V[1, 1] > 0)
optimize_init_constraints(S, (1, 1, 1 \ 2, 2, 3))
(_optimize(S), optimize_result_returncode(S))
optimize_result_errortext(S)
optimize_init_constraints(S, J(0, 0, .))
optimize_init_conv_maxiter(S, 3)
p = optimize(S)
(optimize_result_converged(S), optimize_result_iterations(S), rows(optimize_result_iterationlog(S)))

// A logistic regression: its equations are met, and variances are what they are defined to be.
void logit(todo, b, real colvector y, real matrix X, v, g, H)
{
    real colvector xb
    xb = X * b'
    v = y :* xb - ln(1 :+ exp(xb))
    if (todo == 0) return
    g = (y - 1 :/ (1 :+ exp(-xb))) :* X
    if (todo == 1) return
    H = -cross(X, 1 :/ (1 :+ exp(-xb)) :/ (1 :+ exp(xb)), X)
}
void fit(string scalar type, string scalar technique, y, X, real scalar tol)
{
    transmorphic S
    real rowvector b
    real colvector m
    real matrix V, U
    S = optimize_init()
    optimize_init_evaluator(S, &logit())
    optimize_init_evaluatortype(S, type)
    optimize_init_technique(S, technique)
    optimize_init_params(S, (0, 0, 0))
    optimize_init_argument(S, 1, y)
    optimize_init_argument(S, 2, X)
    optimize_init_tracelevel(S, "none")
    b = optimize(S)
    m = 1 :/ (1 :+ exp(-X * b'))
    V = luinv(cross(X, m :* (1 :- m), X))
    U = (y - m) :* X
    (near(cross(X, y), cross(X, m), tol), near(optimize_result_V(S), V, 1e-5), near(optimize_result_V_opg(S), luinv(U' * U), 1e-5), near(optimize_result_V_robust(S), rows(X) / (rows(X) - 1) * V * U' * U * V, 1e-5))
    optimize_init_cluster(S, (1::rows(X)))
    near(optimize_result_V_robust(S), rows(X) / (rows(X) - 1) * V * U' * U * V, 1e-5)
}
rseed(5)
X = (runiform(500, 2), J(500, 1, 1))
y = runiform(500, 1) :< 1 :/ (1 :+ exp(-X * (1 \ -2 \ .5)))
fit("gf2", "nr", y, X, 1e-8)
fit("gf1", "nr", y, X, 1e-8)
fit("gf0", "nr", y, X, 1e-6)
fit("gf1", "bhhh", y, X, 1e-3)
fit("gf1", "bfgs", y, X, 1e-2)
fit("v2", "nr", y, X, 1e-8)

// What is printed on the way
void hill(todo, p, v, g, H) v = 0 - (p[1] - 3)^4 - p[2]^2
void cliff(todo, p, v, g, H) v = p[1]^4
S = optimize_init()
optimize_init_evaluator(S, &hill())
optimize_init_params(S, (2.5, 4))
optimize_init_technique(S, "nr")
round(optimize(S), .1)
// All that can be traced
void bowl(todo, p, v, g, H)
{
    v = 2 * (p[1] - 1)^2 + 8 * (p[2] + 3)^2
    if (todo >= 1) g = (4 * (p[1] - 1), 16 * (p[2] + 3))
    if (todo == 2) H = (4, 0 \ 0, 16)
}
W = optimize_init()
optimize_init_evaluator(W, &bowl())
optimize_init_evaluatortype(W, "d2")
optimize_init_which(W, "min")
optimize_init_params(W, (0, 0))
optimize_init_tracelevel(W, "hessian")
optimize_init_iterid(W, "Turn")
p = optimize(W)
// A derivative that is wrong is told.
void wrong(todo, p, v, g, H)
{
    banana(todo, p, v, g, H)
    if (todo >= 1) g[2] = g[2] + 1
}
W = optimize_init()
optimize_init_which(W, "min")
optimize_init_params(W, (-1.2, 1))
optimize_init_conv_maxiter(W, 0)
optimize_init_conv_warning(W, "off")
optimize_init_evaluatortype(W, "d1debug")
optimize_init_evaluator(W, &wrong())
p = optimize(W)
optimize_init_evaluator(S, &cliff())
optimize_init_tracelevel(S, "none")
(_optimize(S), optimize_result_returncode(S))
optimize_result_errortext(S)
optimize_init_params(S, (1, .))
_optimize(S)
optimize_result_errortext(S)
optimize_query(S)

// Equations
void circle(real colvector x, v) v = (x[1]^2 + x[2]^2 - 5 \ x[1] * x[2] - 2)
void settle(real colvector x, v, a) v = (.5 * cos(x[2]) + a \ .3 * sin(x[1]))
void never(real colvector x, v) v = x :^ 2 :+ 1
S = solvenl_init()
solvenl_init_evaluator(S, &circle())
solvenl_init_startingvals(S, (3 \ .5))
solvenl_init_iter_log(S, "off")
(near(solvenl_solve(S), (2 \ 1), 1e-10), near(solvenl_result_Jacobian(S), (4, 2 \ 1, 2), 1e-8), solvenl_result_converged(S))
solvenl_init_technique(S, "broydenpowell")
near(solvenl_solve(S), (2 \ 1), 1e-10)
S = solvenl_init()
solvenl_init_evaluator(S, &settle())
solvenl_init_type(S, "fixedpoint")
solvenl_init_numeq(S, 2)
solvenl_init_argument(S, 1, .2)
solvenl_init_iter_log(S, "off")
x = solvenl_solve(S)
near(x, (.5 * cos(x[2]) + .2 \ .3 * sin(x[1])), 1e-11)
solvenl_init_technique(S, "dampedgaussseidel")
near(solvenl_solve(S), x, 1e-9)
solvenl_init_technique(S, "newtonraphson")
near(solvenl_solve(S), x, 1e-10)
S = solvenl_init()
solvenl_init_evaluator(S, &never())
solvenl_init_startingvals(S, 1)
solvenl_init_iter_log(S, "off")
_solvenl_solve(S)
solvenl_result_error_text(S)
end
capture noisily mosa: deriv(G, 2)
capture noisily mosa: optimize_init_technique(S = optimize_init(), "newton")
capture noisily mosa: optimize(S = optimize_init())
capture noisily mosa: solvenl_solve(S = solvenl_init())
