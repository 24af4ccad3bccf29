mosa
a = runiform(500, 500)
eigensystem(a, x = ., l = .)
cols(l)
end
