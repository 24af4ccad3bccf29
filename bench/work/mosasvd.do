mosa
a = runiform(1000, 1000)
s = v = .
if (_svd_la(a, s, v)) _error(3360)
rows(s)
end
