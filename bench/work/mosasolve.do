mosa
for (i = 1; i <= 5; i++) {
    a = runiform(1000, 1000)
    b = runiform(1000, 10)
    if (_lusolve_la(a, b)) _error(3352)
}
rows(b)
end
