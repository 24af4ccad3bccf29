* what damaged files, wrong handles and missing libraries raise
set mosaoptimize on
mosa
real scalar good() return(3)
struct box { real scalar a }
void patch(real scalar at, string scalar bytes)
{
    real scalar h
    h = fopen("good.mo", "rw")
    fseek(h, at, -1)
    fwrite(h, bytes)
    fclose(h)
}
end
mosa mosave good(), replace
mosa drop good()
mosa: good()
* an unknown instruction; the head of the image is 18 bytes, the code's first words two more
local image = 16 + 20*(4 + 4 + 33 + 33)
mosa drop good()
mosa: patch(`image' + 18 + 8, char(250))
capture noisily mosa: good()
display _rc
* no code at all: as if it were not there
mosa drop good()
mosa: patch(`image', 8*char(0))
capture noisily mosa: good()
display _rc
* one made for a version to come, and what is no library
mosa: patch(`image' + 16, char(255) + char(4))
capture noisily mosa: good()
display _rc
mosa: patch(0, "text")
capture noisily mosa: good()
display _rc
* handles, names, modes
mosa
fh = fopen("some.txt", "w")
fput(fh, "line")
end
foreach call in "fclose(49)" `"fopen("", "r")"' `"fopen("some.txt", "q")"' "fget(fh)" `"fopen("nosuch.txt", "r")"' ///
    `"fopen("some.txt", "w")"' "fseek(fh, 3e10, -1)" {
    capture noisily mosa: `call'
    display _rc
}
mosa: fclose(fh)
mosa: fh = fopen("some.txt", "r")
capture noisily mosa: fput(fh, "more")
display _rc
mosa: fclose(fh)
mosa: fh = fopen("some.txt", "a")
capture noisily mosa: fseek(fh, 0, -1)
display _rc
mosa: fclose(fh)
* a piece too large to hold, of a file that is all hole
mosa
fh = fopen("hole.bin", "w")
fseek(fh, 3e9, -1)
fwrite(fh, "x")
fclose(fh)
fh = fopen("hole.bin", "r")
end
capture noisily mosa: x = fread(fh, 2999999999)
display _rc
mosa: fclose(fh)
mosa: unlink("hole.bin")
* more than can be open
mosa
void many()
{
    real scalar i, fh
    for (i = 1; i <= 60; i++) fh = fopen("many" + strofreal(i), "w")
}
end
capture noisily mosa: many()
display _rc
* what is not there, what is given twice, what a view of terms cannot do
capture noisily mosa: _xlbkcreate()
display _rc
mosa: A = (2, 1 \ 1, 2)
capture noisily mosa: _symeigen_la(A, A, A)
display _rc
set obs 4
generate byte g = mod(_n, 2)
mosa: ov_view(V = ., ., "i.g")
mosa: V
capture noisily mosa: V[1, 1] = 5
display _rc
