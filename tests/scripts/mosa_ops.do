* Operators of the matrix language: the value of each expression beside one reckoned by hand.
* chk() says nothing while both agree in type, shape and every element.
set mosaoptimize on
mosa
void chk(transmorphic matrix found, transmorphic matrix wanted)
{
    external real scalar checks
    real scalar same

    checks = checks + 1
    same = eltype(found) == eltype(wanted) & rows(found) == rows(wanted) & cols(found) == cols(wanted)
    if (same) same = found == wanted
    if (!same) {
        printf("check %g: %s %g by %g, wanted:\n", checks, eltype(found), rows(found), cols(found))
        found
        wanted
    }
}
checks = 0
// order and grouping
chk(2>1!=1, 1)
chk(2==2>=1, 0)
chk(5 :- 3 - 1, 3)
chk(8/2#2, 8)
chk(-2^2, 4)
chk(2^3^2, 64)
chk(1 - -2, 3)
chk(2 * -3, -6)
chk(10 - 4 - 3, 3)
chk(64 / 4 / 2, 8)
chk(1 + 2 * 3, 7)
chk((1 + 2) * 3, 9)
chk(1 | 0 & 0, 1)
chk(1 ? 2 : 0 ? 3 : 4, 2)
chk(0 ? 2 : 0 ? 3 : 4, 4)
// a comma inside the brackets of a call parts arguments: joins want brackets of their own
chk((1, 2 \ 3, 4), ((1, 2) \ (3, 4)))
chk((1..3, 4), (1, 2, 3, 4))
chk(((1::2), (3::4)), (1, 3 \ 2, 4))
chk(1 + 1 .. 2 * 2, (2, 3, 4))
// sums and differences: one shape, missing and overflow, complex, strings
chk(1 + ., .)
chk(8e307 + 1e308, .)
chk(-8e307 - 1e308, .)
chk((1, 2) + (10, 20), (11, 22))
chk((1, 2) - (10, .), (-9, .))
chk(J(0, 3, .) + J(0, 3, .), J(0, 3, .))
chk((1 + 2i, 3) + (1, 1i), (2 + 2i, 3 + 1i))
chk(1 - 1i, C(1, -1))
chk("a" + "b", "ab")
chk(("a", "") + ("", ""), ("a", ""))
chk(-(1, -2, .), (-1, 2, .))
chk(-(1 - 2i), C(-1, 2))
// products
chk((1, 2 \ 3, 4) * (5, 6 \ 7, 8), (19, 22 \ 43, 50))
chk((1, 2) * (3 \ 4), 11)
chk((3 \ 4) * (1, 2), (3, 6 \ 4, 8))
chk(3 * (1, .), (3, .))
chk((1, .) * 3, (3, .))
chk((0, 1) * (., 2 \ 3, 4), (., 4))
chk((., 2 \ 3, 4) * (0 \ 1), (. \ 4))
chk(J(2, 0, .) * J(0, 3, .), J(2, 3, 0))
chk(1i * 1i, C(-1, 0))
chk((1 + 1i, 2 - 1i) * (1 \ 1), C(3, 0))
chk((1 + 1i, 2) * (2 \ 1i), C(2, 4))
chk(3 * "ab", "ababab")
chk("ab" * 2.9, "abab")
chk(-1 * "ab", "")
chk(2 * ("a", "b"), ("aa", "bb"))
// quotients and powers
chk((1, 2, .) / 4, (.25, .5, .))
chk(1 / 0, .)
chk((4 + 2i) / (1 + 1i), C(3, -1))
chk(2 ^ 10, 1024)
chk(0 ^ 0, 1)
chk((-8) ^ (1 / 3), .)
chk(1i ^ 2, C(-1, 0))
chk((1, 2 \ 3, 4) # (0, 1), (0, 1, 0, 2 \ 0, 3, 0, 4))
chk((1, 2)', (1 \ 2))
chk((1 + 2i, 3)', (1 - 2i \ 3))
chk(("a", "b")', ("a" \ "b"))
a = (1 \ 2)
chk(a'a, 5)
// colon operators: the seven meetings of shapes
m = (1, 2 \ 3, 4 \ 5, 6)
chk(m :+ m, (2, 4 \ 6, 8 \ 10, 12))
chk(m :- (1, 2), (0, 0 \ 2, 2 \ 4, 4))
chk(m :* (1 \ 0 \ -1), (1, 2 \ 0, 0 \ -5, -6))
chk((60, 120) :/ m, (60, 60 \ 20, 30 \ 12, 20))
chk((1 \ 2 \ 3) :^ (m :- 1), (1, 1 \ 4, 8 \ 81, 243))
chk(m :+ 1, (2, 3 \ 4, 5 \ 6, 7))
chk(10 :- m, (9, 8 \ 7, 6 \ 5, 4))
chk((1, .) :+ 1, (2, .))
chk((1, 1i) :* (2, 3), (2, 3i))
chk(("a", "b") :+ "x", ("ax", "bx"))
chk(("a", "b") :* (1, 3), ("a", "bbb"))
chk(m :> 3, (0, 0 \ 0, 1 \ 1, 1))
chk((1, ., 3) :>= 3, (0, 1, 1))
chk((1, ., 3) :< 3, (1, 0, 0))
chk((1, ., 3) :<= (1, ., 2), (1, 1, 0))
chk((1, ., 3) :== (1, ., 2), (1, 1, 0))
chk((1, ., 3) :!= (1, ., 2), (0, 0, 1))
chk((1, 2i) :~= (1, 2), (0, 1))
chk(("a", "B", "") :< "a", (0, 1, 1))
chk((0, 1, .) :& 1, (0, 1, 1))
chk((0, 1, 0) :| (0, 0, 2), (0, 1, 1))
chk(J(0, 2, .) :+ (1, 2), J(0, 2, .))
// whole values compared
chk((1, 2) == (1, 2), 1)
chk((1, 2) == (1 \ 2), 0)
chk((1, 2) != (1, 3), 1)
chk((2, 3) > (1, 2), 1)
chk((2, 3) > (1, 3), 0)
chk("a" < "b", 1)
chk("a" == 1, 0)
chk(1 == C(1, 0), 1)
chk(1 == C(1, 1), 0)
chk(. == ., 1)
chk(1e300 < ., 1)
chk(NULL == NULL, 1)
chk(&a == &a, 1)
chk(&a == &m, 0)
chk(!0, 1)
chk(!(0, 3, .), (1, 0, 0))
chk(!NULL, 1)
chk(1 & ., 1)
chk(0 | NULL, 0)
// joins and ranges
chk((J(0, 0, .), 5), 5)
chk((J(0, 0, .) \ (1, 2)), (1, 2))
chk((1, 2i), C((1, 0), (0, 2)))
chk((J(2, 0, .), (1 \ 2)), (1 \ 2))
chk(1::3, (1 \ 2 \ 3))
chk(3..1, (3, 2, 1))
chk(1.5..3.2, (1.5, 2.5))
chk(4..4, 4)
chk(. .. 3, .)
chk(1::., .)
// subscripts
x = (11, 12, 13 \ 21, 22, 23 \ 31, 32, 33)
chk(x[2, 3], 23)
chk(x[., 2], (12 \ 22 \ 32))
chk(x[, 2], (12 \ 22 \ 32))
chk(x[2, ], (21, 22, 23))
chk(x[(3, 1), (2, 2)], (32, 32 \ 12, 12))
chk(x[(3 \ 1), .], (31, 32, 33 \ 11, 12, 13))
chk(x[|1, 1 \ 2, .|], (11, 12, 13 \ 21, 22, 23))
chk(x[|2, 2 \ ., .|], (22, 23 \ 32, 33))
chk(x[|3, 2|], 32)
chk((5, 6, 7)[|2, .|], (6, 7))
chk((5 \ 6 \ 7)[|. \ 2|], (5 \ 6))
chk((5, 6, 7)[2], 6)
chk((5, 6, 7)[(3, 3)], (7, 7))
chk((5, 6, 7)[.], (5, 6, 7))
chk(x[1.9, 2.9], 12)
chk(("a", "b")[2], "b")
chk((1, 2i)[2], 2i)
chk(x[J(1, 0, .), .], J(0, 3, .))
// stores of all kinds
x[1, 1] = -1
x[2, .] = (-2, -2, -2)
x[., 3] = (7 \ 8 \ 9)
chk(x, (-1, 12, 7 \ -2, -2, 8 \ 31, 32, 9))
x[(3, 1), (1, 2)] = (1, 2 \ 3, 4)
chk(x, (3, 4, 7 \ -2, -2, 8 \ 1, 2, 9))
x[|1, 1 \ 2, 2|] = J(2, 2, 0)
chk(x, (0, 0, 7 \ 0, 0, 8 \ 1, 2, 9))
y = (1, 2, 3)
y[2] = y[3] = 9
y[|1, 2|] = (4, 5)
chk(y, (4, 5, 9))
s = ("a", "b")
s[2] = "long " + s[1]
chk(s, ("a", "long a"))
z = (1i, 2)
z[2] = 5 - 1i
chk(z, (1i, 5 - 1i))
p = &y
(*p)[1] = 0
(*p)[|2, 3|] = (8, 8)
chk(y, (0, 8, 8))
*p = "gone"
chk(y, "gone")
q = (&x, NULL)
(*q[1])[3, 3] = 99
chk(x[3, 3], 99)
chk(q[2] == NULL, 1)
i = 1
chk(i++ + 10, 11)
chk(i, 2)
chk(i-- , 2)
chk(i, 1)
w = y = 3
chk((w, y), (3, 3))
printf("%g checks\n", checks)
end

* Views read and write the data; what is not an array takes the slower ways.
drop _all
set obs 4
generate double u = _n
generate double v = 10 * _n
generate str5 t = "n" + string(_n)
mosa
V = .
ov_view(V, ., ("u", "v"))
chk(isview(V), 1)
chk(V + V, (2, 20 \ 4, 40 \ 6, 60 \ 8, 80))
chk(V :* 2, (2, 20 \ 4, 40 \ 6, 60 \ 8, 80))
chk(V :- V[1, .], (0, 0 \ 1, 10 \ 2, 20 \ 3, 30))
chk(V', (1, 2, 3, 4 \ 10, 20, 30, 40))
chk(V'V, (30, 300 \ 300, 3000))
chk(V * (1 \ 1), (11 \ 22 \ 33 \ 44))
chk(-V[4, .], (-4, -40))
chk(V / 2, (.5, 5 \ 1, 10 \ 1.5, 15 \ 2, 20))
chk(V # 2, (2, 20 \ 4, 40 \ 6, 60 \ 8, 80))
chk(V[|2, 1 \ 3, 2|], (2, 20 \ 3, 30))
chk(V[(4, 1), 2], (40 \ 10))
chk(V == V :+ 0, 1)
chk(V :> 3, (0, 1 \ 0, 1 \ 0, 1 \ 1, 1))
chk((V, V[., 1]), (1, 10, 1 \ 2, 20, 2 \ 3, 30, 3 \ 4, 40, 4))
chk((V[|1, 1 \ 1, 2|] \ V), (1, 10 \ 1, 10 \ 2, 20 \ 3, 30 \ 4, 40))
V[1, 1] = .
V[4, .] = (44, 440)
V[., 2] = V[., 2] :+ 1
V[|2, 1 \ 3, 1|] = (22 \ 33)
T = .
ov_sview(T, (1::2), "t")
chk(T, ("n1" \ "n2"))
chk(T :+ "!", ("n1!" \ "n2!"))
chk(T + T, ("n1n1" \ "n2n2"))
T[2] = "two"
W = V
chk(isview(W), 0)
W[1, 1] = 5
V = V
chk(isview(V), 0)
V[1, 1] = 5
ov_view(V, ., ("u", "v"))
end
list
mosa: V[., .] = J(4, 2, 1)
list u v in 1/2
