* files from the matrix language: built-in functions and those of the library
set mosaoptimize on
mosa
f = fopen("verse.txt", "w")
fput(f, "one")
fput(f, "")
fput(f, "three")
fwrite(f, "no end")
fclose(f)
cat("verse.txt")
cat("verse.txt", 2, 3)
rows(cat("verse.txt", 9))
f = fopen("verse.txt", "r")
(fget(f), fgetnl(f), fget(f), fget(f))
ftell(f)
fstatus(f)
rows(fget(f))
fstatus(f)
fclose(f)

// what a program would do: count lines, keep the longest
real scalar lines(string scalar name, string scalar longest)
{
	real scalar f, n
	string matrix line

	f = fopen(name, "r")
	fautoclose(f)
	longest = ""
	for (n = 0; rows(line = fget(f)); n++)
		if (strlen(line) > strlen(longest)) longest = line
	fclose(f)
	return(n)
}
lines("verse.txt", x = "")
x

// a list, a circle and two pointers to one matrix keep their shape
struct node {
	string scalar name
	pointer(struct node scalar) scalar next
}
void write_ring()
{
	struct node scalar a, b
	real matrix m
	real scalar f

	a.name = "a"
	b.name = "b"
	a.next = &b
	b.next = &a
	m = (1, 2 \ 3, 4)
	f = fopen("ring.mat", "w")
	fputmatrix(f, a)
	fputmatrix(f, (&m, &m, NULL, &write_ring()))
	fclose(f)
}
void read_ring()
{
	struct node scalar a
	pointer rowvector p
	real scalar f

	f = fopen("ring.mat", "r")
	a = fgetmatrix(f)
	printf("%s %s %s\n", a.name, (*a.next).name, (*(*a.next).next).name)
	(*(*a.next).next).name = "changed"
	printf("%s\n", (*(*(*(*a.next).next).next).next).name)
	p = fgetmatrix(f)
	fclose(f)
	(p[1] == p[2], p[3] == NULL, p[4] == NULL)
	*p[2]
}
write_ring()
read_ring()

// paths and directories
pathsplit("a/b/c.txt", d = "", n = "")
(d, n)
pathsplit("c.txt", d = "", n = "")
(d, n)
pathsplit("/c", d = "", n = "")
(d, n)
(pathresolve("a/b", "../c.do"), pathresolve("a", "../../c"), pathresolve("a", "/c"))
pathlist("a; b c ;;d")
pathsubsysdir(("x", "PERSONAL")) == ("x", c("sysdir_personal"))
mkdir("sub")
f = fopen("sub/data.bin", "w")
fclose(f)
(fileexists("sub/data.bin"), fileexists("sub"), fileexists("none"))
findfile("data.bin", "nowhere;sub")
findfile("none", "nowhere;sub")
p = pwd()
chdir("sub")
dir(".", "files", "*")
chdir(p)
unlink("sub/data.bin")
rmdir("sub")
direxists("sub")

// binary files
C = bufio()
bufbyteorder(C, 1)
f = fopen("numbers.bin", "w")
fbufput(C, f, "%2b", (1, -2, .))
fbufput(C, f, "%5s", "abc")
fbufput(C, f, "%8z", (1.5 \ -1e9))
fclose(f)
f = fopen("numbers.bin", "r")
fbufget(C, f, "%2b", 1, 3)
fbufget(C, f, "%5s")
fbufget(C, f, "%8z", 2, 1)
fbufget(C, f, "%8z")
fclose(f)
bufmissingvalue(C, .)
f = fopen("numbers.bin", "r")
fbufget(C, f, "%2b", 1, 3)
fclose(f)
end

* what cannot be
capture noisily mosa: mkdir("verse.txt")
capture noisily mosa: chdir("none")
capture noisily mosa: rmdir("none")
capture noisily mosa: ftell(33)
capture noisily mosa: bufbyteorder(C, 3)

* each code of files, by what raises it
capture noisily mosa: cat("none")
capture noisily mosa: fopen("verse.txt", "w")
capture noisily mosa: fopen("none/verse.txt", "w")
capture noisily mosa: fopen("/proc/self/exe", "rw")
mosa: f = fopen("verse.txt", "r")
capture noisily mosa: fgetmatrix(f)
mkdir sub
capture noisily mosa: unlink("sub")
mosa: g = fopen("/dev/full", "a")
capture noisily mosa: fput(g, "x")
capture noisily mosa: fclose(33)
capture noisily mosa: fopen("", "r")
capture noisily mosa: fopen("verse.txt", "read")
mosa
h = J(1, 50, .)
for (i = 1; i <= 48; i++) h[i] = fopen("verse.txt", "r")
end
capture noisily mosa: fopen("verse.txt", "r")
mosa
for (i = 1; i <= 48; i++) fclose(h[i])
h = fopen("hole", "rw")
fseek(h, 3e9, -1)
fput(h, "end")
fseek(h, 0, -1)
end
capture noisily mosa: fread(h, 4e9)
mosa: (rows(_fread(h, 4e9)), fstatus(h))
mosa: (_fseek(h, -4, 1), _fseek(h, 0, 1) - fsize(h))
capture noisily mosa: fput(f, "x")
capture noisily mosa: fget(g)
capture noisily mosa: fseek(g, 0, -1)
mosa
fclose(f)
fclose(g)
fclose(h)
unlink("hole")
end
