* How often each word of a text is there, and a small reader of settings: tokens and keyed arrays.
version 12.1
mosa
// Counts words without regard to capitals.
transmorphic count(string scalar text)
{
    transmorphic t, A
    string scalar word

    A = asarray_create()
    asarray_notfound(A, 0)
    t = tokeninit(" ,.;", J(1, 0, ""), "")
    tokenset(t, strlower(text))
    while ((word = tokenget(t)) != "") asarray(A, word, asarray(A, word) + 1)
    return(A)
}

// The n commonest, those as common in the order of the alphabet.
void commonest(transmorphic A, real scalar n)
{
    string colvector words
    real colvector times, p
    real scalar i

    words = sort(asarray_keys(A), 1)
    times = J(rows(words), 1, .)
    for (i = 1; i <= rows(words); i++) times[i] = asarray(A, words[i])
    p = order(times, -1)
    for (i = 1; i <= min(n, rows(p)); i++) printf("%-8s %2.0f\n", words[p[i]], times[p[i]])
}

commonest(count("The cat saw the dog. The dog, it saw; the bird saw it, and the cat."), 5)

// "name = value" by ";": numbers become numbers, dates days, anything else stays text.
transmorphic settings(string scalar text)
{
    transmorphic A, t
    string rowvector w
    string scalar line
    real scalar k, day

    A = asarray_create()
    t = tokeninit(";")
    tokenset(t, text)
    while ((line = tokenget(t)) != "") {
        if (!regexm(line, "^ *([a-z]+) *= *(.*)$")) _error("not a setting: " + line)
        w = (regexs(1), strtrim(regexs(2)))
        k = strtoreal(w[2])
        day = date(w[2], "DMY")
        if (k < .)        asarray(A, w[1], k)
        else if (day < .) asarray(A, w[1], day)
        else              asarray(A, w[1], w[2])
    }
    return(A)
}

S = settings("runs = 1e3; begin = 17sep2026; title = A trial, the second; seed=42")
sort(asarray_keys(S), 1)'
(asarray(S, "runs"), asarray(S, "begin"), asarray(S, "seed"))
asarray(S, "title")
(dow(asarray(S, "begin")), asarray_contains(S, "end"))
end
