mosa
real scalar loop(real scalar n)
{
    real scalar i, s

    s = 0
    for (i = 1; i <= n; i++) s = s + i * 2
    return(s)
}
loop(20000000)
end
