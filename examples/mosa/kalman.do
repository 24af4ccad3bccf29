* A Kalman filter: the level of a random walk seen through noise.
version 12.1
mosa
// y is T by 1, q and r the variances of the walk and of the noise. Returns the filtered
// levels, their variances and the log likelihood in the last argument.
real matrix filtered(real colvector y, real scalar q, real scalar r,
                     real scalar start, real scalar variance, real scalar loglik)
{
    real scalar t, gain, f, v
    real matrix result

    result = J(rows(y), 2, .)
    loglik = 0
    for (t = 1; t <= rows(y); t++) {
        variance = variance + q
        if (y[t] < .) {
            f = variance + r
            v = y[t] - start
            gain = variance / f
            start = start + gain * v
            variance = (1 - gain) * variance
            loglik = loglik - 0.5 * (ln(2 * 3.14159265358979324) + ln(f) + v^2 / f)
        }
        result[t, 1] = start
        result[t, 2] = variance
    }
    return(result)
}

// The same in matrices: a local linear trend. F moves the state, h reads it.
real matrix trend(real colvector y, real scalar q, real scalar r)
{
    real scalar t, f
    real matrix F, P, Q, out
    real colvector a, h, k

    F = (1, 1 \ 0, 1)
    h = (1 \ 0)
    Q = q * I(2)
    a = (y[1] \ 0)
    P = 10 * I(2)
    out = J(rows(y), 2, .)
    for (t = 1; t <= rows(y); t++) {
        a = F * a
        P = F * P * F' + Q
        f = h' * P * h + r
        k = P * h / f
        a = a + k * (y[t] - h' * a)
        P = P - k * h' * P
        out[t, .] = a'
    }
    return(out)
}

y = (4.2 \ 4.9 \ 5.1 \ . \ 6.3 \ 6.1 \ 7.4 \ 7.2 \ 8.5 \ 8.8)
ll = .
z = filtered(y, 0.3, 0.5, 4, 1, ll)
printf("log likelihood %9.5f\n", ll)
for (i = 1; i <= rows(z); i++) printf("%3.0f %9.0g %9.4f %9.4f\n", i, y[i], z[i, 1], z[i, 2])
u = trend((1 \ 2.1 \ 2.9 \ 4.2 \ 5 \ 5.9), 0.01, 0.1)
printf("level %8.4f, slope %8.4f\n", u[6, 1], u[6, 2])
end
