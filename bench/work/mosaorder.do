mosa
rseed(1)
X = runiform(1000000, 1)
p = order(X, 1)
Y = ceil(runiform(1000000, 3) * 50)
p = order(Y, (1, -2, 3))
U = uniqrows(Y, 1)
S = strofreal(Y[|1, 1 \ 300000, 1|]) + strofreal(X[|1 \ 300000|])
p = order(S, 1)
end
