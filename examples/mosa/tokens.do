* A tokeniser and, on top of it, a calculator: recursive descent over a vector of words.
version 12.1
mosa
// The numbers, names and signs of a text.
string rowvector scan(string scalar text)
{
    string rowvector out
    string scalar c, word
    real scalar i

    out = J(1, 0, "")
    word = ""
    for (i = 1; i <= strlen(text) + 1; i++) {
        c = substr(text, i, 1)
        if (strpos("0123456789.abcdefghijklmnopqrstuvwxyz", c)) {
            word = word + c
            continue
        }
        if (word != "") out = (out, word)
        word = ""
        if (c != "" & c != " ") out = (out, c)
    }
    return(out)
}

real scalar value(string scalar word)
{
    real scalar z

    z = .
    if (_strtoreal(word, z)) _error(3300, "not a number: " + word)
    return(z)
}

real scalar factor(string rowvector w, real scalar at)
{
    real scalar z

    if (w[at] == "-") {
        at = at + 1
        return(-factor(w, at))
    }
    if (w[at] == "(") {
        at = at + 1
        z = expression(w, at)
        at = at + 1
        return(z)
    }
    z = value(w[at])
    at = at + 1
    return(z)
}

real scalar term(string rowvector w, real scalar at)
{
    real scalar z, divide

    z = factor(w, at)
    while (at <= cols(w)) {
        if (w[at] != "*" & w[at] != "/") break
        divide = w[at] == "/"
        at = at + 1
        z = divide ? z / factor(w, at) : z * factor(w, at)
    }
    return(z)
}

real scalar expression(string rowvector w, real scalar at)
{
    real scalar z, minus

    z = term(w, at)
    while (at <= cols(w)) {
        if (w[at] != "+" & w[at] != "-") break
        minus = w[at] == "-"
        at = at + 1
        z = minus ? z - term(w, at) : z + term(w, at)
    }
    return(z)
}

real scalar calculate(string scalar text) return(expression(scan(text), 1))

scan("12*(x1 + 4.5)")
calculate("2 + 3 * (4 - 1) / 2")
calculate("-(1 - 2) * 10")
calculate("8 / 2 / 2")
end
