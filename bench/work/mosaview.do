set obs 10000000
generate double x = _n
generate byte b = mod(_n, 100)
mosa
ov_view(V=., ., ("x", "b"))
for (i = 1; i <= 5; i++) s = colsum(V)
s
for (i = 1; i <= 1000000; i++) V[i, 2] = V[i, 2] + 1
end
