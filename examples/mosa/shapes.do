* A hierarchy of classes: what a shape can say of itself is decided when it runs.
version 12.1
mosa
class shape {
  public:
    void new()
    virtual real scalar area()
    virtual string scalar name()
    void describe()
    static real scalar made
}
class circle extends shape {
  public:
    real scalar radius
    virtual real scalar area()
    virtual string scalar name()
}
class rectangle extends shape {
  public:
    real scalar width, height
    virtual real scalar area()
    virtual string scalar name()
}
class square extends rectangle {
  public:
    void side()
    virtual string scalar name()
}

void shape::new() made = (made >= . ? 1 : made + 1)
real scalar shape::area() return(.)
string scalar shape::name() return("shape")
void shape::describe() printf("%s of area %9.4f\n", this.name(), this.area())

real scalar circle::area() return(3.14159265358979324 * radius^2)
string scalar circle::name() return("circle")
real scalar rectangle::area() return(width * height)
string scalar rectangle::name() return("rectangle")
void square::side(real scalar s)
{
    width = s
    height = s
}
string scalar square::name() return("square")

void show()
{
    class circle scalar c
    class rectangle scalar r
    class square scalar s
    pointer(class shape scalar) rowvector all
    real scalar i

    c.radius = 2
    r.width = 3
    r.height = 4
    s.side(5)
    all = (&c, &r, &s)
    for (i = 1; i <= cols(all); i++) all[i]->describe()

}
show()
end
