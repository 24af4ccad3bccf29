set obs 10000000
generate double x = _n
generate byte b = mod(_n, 100)
mosa
for (i = 1; i <= 5; i++) X = ov_data(., ("x", "b"))
sum(X[1..10, 1])
end
