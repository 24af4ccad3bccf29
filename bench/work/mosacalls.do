mosa
real scalar add(real scalar a, real scalar b) return(a + b)
real scalar calls(real scalar n)
{
    real scalar i, s

    s = 0
    for (i = 1; i <= n; i++) s = add(s, i)
    return(s)
}
calls(1000000)
end
