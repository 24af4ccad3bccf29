// core/pollsort.h - sorting an array that may be long, with a break seen on the way.
#pragma once
#include "core/mem.h"
#include <algorithm>
#include <cstdint>

// As std::sort of a[0..n). 0, or 1 after a break: every element is still there, in some order.
// Long pieces are parted about the middle of nine (Hoare's partition, which splits ties
// evenly), short ones go to std::sort.
template <class T, class Less> int32_t poll_sort(T *a, int64_t n, Less less)
{
    constexpr int64_t small = 1 << 15;
    auto median = [&](int64_t i, int64_t j, int64_t k) {
        if (less(a[i], a[j]))
            return less(a[j], a[k]) ? j : less(a[i], a[k]) ? k : i;
        return less(a[i], a[k]) ? i : less(a[j], a[k]) ? k : j;
    };
    while (n > small) {
        int64_t e = n / 9;
        T pivot = a[median(median(0, e, 2 * e), median(3 * e, 4 * e, 5 * e),
                           median(6 * e, 7 * e, 8 * e))];
        int64_t i = -1, j = n;
        for (int64_t swaps = 1;; swaps++) {
            do
                i++;
            while (less(a[i], pivot));
            do
                j--;
            while (less(pivot, a[j]));
            if (i >= j)
                break;
            std::swap(a[i], a[j]);
            if ((swaps & 0xffff) == 0 && fault_poll())
                return 1;
        }
        int64_t left = j + 1;
        if (left == n) // the pivot was the largest: it stands alone at the end
            left = n - 1;
        int32_t rc =
            left < n - left ? poll_sort(a, left, less) : poll_sort(a + left, n - left, less);
        if (rc)
            return rc;
        if (left < n - left) {
            a += left;
            n -= left;
        } else {
            n = left;
        }
    }
    std::sort(a, a + n, less);
    return fault_poll() ? 1 : 0;
}
