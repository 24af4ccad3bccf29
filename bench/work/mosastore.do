set obs 10000000
generate double x = 0
generate byte b = 0
mosa
X = J(10000000, 2, 7)
for (i = 1; i <= 5; i++) ov_store(., ("x", "b"), X)
end
