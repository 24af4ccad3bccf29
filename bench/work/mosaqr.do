mosa
a = runiform(1000, 1000)
qrd(a, q = ., r = .)
x = qrsolve(a, runiform(1000, 10), rank = .)
rank
end
