* Which penguins are male? A logistic regression by maximum likelihood, written in the language.
version 12.1
sysuse penguins, clear
decode sex, generate(word)
generate male = word == "male" if word != ""
generate kg = body_mass_g / 1000
mosa
// The log likelihood of each observation, its scores, and the Hessian of the sum.
void evaluate(todo, b, real colvector y, real matrix X, v, g, H)
{
    real colvector xb, p

    xb = X * b'
    p = 1 :/ (1 :+ exp(-xb))
    v = y :* ln(p) + (1 :- y) :* ln(1 :- p)
    if (todo == 0) return
    g = (y - p) :* X
    if (todo == 1) return
    H = -cross(X, p :* (1 :- p), X)
}

V = .
ov_view(V, ., ("male", "bill_depth_mm", "kg"), 0)
y = V[., 1]
X = (V[., (2, 3)], J(rows(V), 1, 1))
printf("%g observations, %g of them male\n", rows(y), sum(y))

S = optimize_init()
optimize_init_evaluator(S, &evaluate())
optimize_init_evaluatortype(S, "gf2")
optimize_init_argument(S, 1, y)
optimize_init_argument(S, 2, X)
optimize_init_params(S, (0, 0, 0))
b = optimize(S)
se = sqrt(diagonal(optimize_result_V(S)))'
robust = sqrt(diagonal(optimize_result_V_robust(S)))'
names = ("depth", "kg", "constant")
printf("\n%-10s %10s %10s %10s\n", "", "b", "se", "robust")
for (i = 1; i <= 3; i++) printf("%-10s %10.4f %10.4f %10.4f\n", names[i], b[i], se[i], robust[i])
end
