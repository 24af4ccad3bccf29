mosa
h = runiform(1, 2^20)
for (i = 1; i <= 5; i++) {
    f = h
    _fft(f)
    _invfft(f)
}
f = runiform(1, 1000003)
_fft(f)
cols(f)
end
