* The sieve of Eratosthenes.
version 12.1
mosa
real rowvector primes(real scalar n)
{
    real rowvector prime, found
    real scalar i, j, k

    prime = J(1, n, 1)
    prime[1] = 0
    for (i = 2; i * i <= n; i++) {
        if (!prime[i]) continue
        for (j = i * i; j <= n; j = j + i) prime[j] = 0
    }
    found = J(1, sum(prime), .)
    k = 0
    for (i = 2; i <= n; i++) {
        if (prime[i]) {
            k++
            found[k] = i
        }
    }
    return(found)
}

primes(50)
p = primes(100000)
printf("%g primes up to 100000, the last %g\n", cols(p), p[cols(p)])
end
