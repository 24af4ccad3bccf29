mosa
a = runiform(1000, 1000)
a = a + a'
x = l = .
if (_symeigen_la(a, x, l)) _error(3360)
cols(l)
end
