mosa
a = runiform(1000, 1000)
for (i = 1; i <= 5; i++) b = a * a
rows(b)
end
