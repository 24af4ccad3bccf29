* Functions of the library about variables, views and names of rows and columns.
set mosaoptimize on
set more off
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
end
set obs 6
generate byte x1 = _n
generate double x2 = _n^2 if _n != 4
generate str3 s = "t" + string(_n)
label variable x2 "squares"
label define few 1 "one" 2 "two"
label values x1 few
format x2 %6.1f
mosa
chk(ov_varnames(), ("x1" \ "x2" \ "s"))
chk(ov_varnames("x*"), ("x1" \ "x2"))
chk((ov_varexists("x1"), ov_varexists("x3")), (1, 0))
chk(ov_varlabels(("x1", "x2")), ("", "squares"))
chk(ov_vartypes((1, 2, 3)), ("byte", "double", "str3"))
chk(ov_varformats("x2"), "%6.1f")
chk(ov_decoded("x1"), ("one" \ "two" \ "3" \ "4" \ "5" \ "6"))
chk(strtrim(ov_decoded("x2")[(3, 4)]), ("9.0" \ "."))
chk(ov_decoded(3, "x2"), ("t1" \ "t2" \ "t3" \ "t4" \ "t5" \ "t6"))
chk(ov_put(("x2", "y"), ((1::6), (6::1))), (2, 4))
chk(ov_data(3, ("x2", "y")), (3, 4))
chk(ov_put("wide", J(6, 1, "some text")), 5)
chk(ov_vartypes((4, 5)), ("double", "str9"))
ov_view(V = ., (1, 2 \ 4, 5 \ 6, 6), ("y", "x1"))
chk(ov_viewnames(V), ("y", "x1"))
chk(ov_viewruns(V), (1, 2 \ 4, 6))
ov_view(V, 3, "y")
chk(ov_viewruns(V), (3, 3))
S = ("e", "a" \ "", "b")
chk(ov_stripenames(S), ("e:a" \ "b"))
chk(ov_namestripe(("e:a", "b")), S)
ov_namedmatrix("M", (1, 2 \ 3, 4.25), ("e:a", "b"), ("c", "long_name"))
chk(ov_matrixrownames("M"), ("e:a" \ "b"))
chk(ov_matrixcolnames("M", ("p", "q")), ("p" \ "q"))
ov_printmatrix(ov_matrix("M"), ov_matrixrownames("M"), ov_matrixcolnames("M"))
ov_printmatrix(I(2) / 3, ("first", "second"), ("a_long_name", "b"), "%5.3f")
ov_templocals(("a", "b"))
chk((ov_local("a") != ov_local("b"), ov_isname(ov_local("a"))), (1, 1))
ov_local("a", "A")
ov_local("b", "B")
chk(ov_locals(("a" \ "b" \ "none")), ("A" \ "B" \ ""))
end
matrix list M
capture noisily mosa: x = ov_put("y", (1 \ 2))
capture noisily mosa: x = ov_varnames("nosuch")
capture noisily mosa: ov_namedmatrix("N", I(2), "a", ("b", "c"))
capture matrix list N
display _rc
mosa: checks
