* Newton's method, the function and its derivative handed over as pointers.
version 12.1
mosa
real scalar newton(pointer(real scalar function) scalar f,
                   pointer(real scalar function) scalar df,
                   real scalar start, | real scalar tolerance)
{
    real scalar x, step, turns

    if (args() < 4) tolerance = 1e-14
    x = start
    for (turns = 1; turns <= 100; turns++) {
        step = (*f)(x) / (*df)(x)
        x = x - step
        if (abs(step) <= tolerance * (abs(x) + 1)) return(x)
    }
    _error(3360)
}

real scalar cube(real scalar x) return(x^3 - 2)
real scalar dcube(real scalar x) return(3*x^2)
real scalar wave(real scalar x) return(cos(x) - x)
real scalar dwave(real scalar x) return(-sin(x) - 1)

printf("cube root of 2    %18.15f\n", newton(&cube(), &dcube(), 1))
printf("cos(x) = x        %18.15f\n", newton(&wave(), &dwave(), 1))
end
