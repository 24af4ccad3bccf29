set mosaoptimize on
* what the compiler says when it refuses
capture noisily mosa: x = 1)
capture noisily mosa: x = (1]
capture noisily mosa: x = "abc
capture noisily mosa: x = 1 2
capture noisily mosa: x = if
capture noisily mosa: 1 = 2
capture noisily mosa: ++x
capture noisily mosa: x = "a" - 1
display _rc
capture noisily mosa: nosuchthing
display _rc
capture noisily mosa: nosuchfunction(1)
capture noisily mosa: y = undefinedbefore + 1
capture noisily mosa: sqrt()
capture noisily mosa: break
capture noisily mosa: goto nowhere
capture noisily mosa: version 13
mosa:
void unused(a, b) {
    real scalar c, d
    c = b
    e = 1
    f = g
}
set_nothing = 1
end
set mosastrict on
capture noisily mosa: void strict(a) x = a
set mosastrict off
mosa: void strict(a) x = a
capture noisily mosa: void strict(a) x = a
capture noisily mosa: void sqrt(a) x = a
capture noisily mosa: void opt(| struct s scalar a) x = 1
mosa:
struct s {
    real scalar x
}
class c {
    private:
    real scalar hidden
    public:
    final real scalar f()
    void new()
}
end
capture noisily mosa: void t(struct s scalar a) a.y = 1
capture noisily mosa: void t(struct s scalar a) a.x = "one"
capture noisily mosa: void t(class c scalar a) a.hidden = 1
capture noisily mosa: void t(class c scalar a) a.new()
capture noisily mosa: void t(a) a.x = 1
capture noisily mosa: void c::g() x = 1
capture noisily mosa: void c::f() x = 1
mosa
x = 1
y = (x
+ 1
+ )
z = 2
end
