* Quicksort, calling itself on both parts of one vector that all calls share.
version 12.1
mosa
void quicksort(real rowvector v, real scalar from, real scalar to)
{
    real scalar i, j, pivot, keep

    if (from >= to) return
    pivot = v[trunc((from + to) / 2)]
    i = from
    j = to
    while (i <= j) {
        while (v[i] < pivot) i++
        while (v[j] > pivot) j--
        if (i <= j) {
            keep = v[i]
            v[i] = v[j]
            v[j] = keep
            i++
            j--
        }
    }
    quicksort(v, from, j)
    quicksort(v, i, to)
}

real scalar sorted(real rowvector v)
{
    real scalar i

    for (i = 2; i <= cols(v); i++) {
        if (v[i] < v[i - 1]) return(0)
    }
    return(1)
}

x = (31, 4, 15, 92, 65, 35, 8, 97, 93, 2)
quicksort(x, 1, cols(x))
x
rseed(12345)
y = runiform(1, 20000)
quicksort(y, 1, cols(y))
sorted(y)
end
