set mosaoptimize on
* structs, pointers and classes
mosa:
struct point {
    real scalar x, y
}
struct shape {
    string scalar name
    struct point vector at
    pointer(struct shape scalar) scalar next
}
real scalar perimeter(struct shape scalar s)
{
    real scalar i, n, sum, dx, dy

    n = length(s.at)
    sum = 0
    for (i=1; i<=n; i++) {
        dx = s.at[i].x - s.at[i==n ? 1 : i+1].x
        dy = s.at[i].y - s.at[i==n ? 1 : i+1].y
        sum = sum + sqrt(dx^2 + dy^2)
    }
    return(sum)
}
void demo()
{
    struct shape scalar a, b
    pointer(struct shape scalar) scalar p

    a.name = "square"
    a.at = point(4)
    a.at[1].x = 0; a.at[1].y = 0
    a.at[2].x = 1; a.at[2].y = 0
    a.at[3].x = 1; a.at[3].y = 1
    a.at[4].x = 0; a.at[4].y = 1
    b = a
    b.name = "copy"
    b.at[3].x = 4
    b.at[3].y = 4
    a.next = &b
    for (p = &a; p != NULL; p = p->next) {
        printf("%s %9.0g\n", p->name, perimeter(*p))
    }
    (a == b, a == a)
}
demo()
class stack {
  public:
    void push(), new()
    transmorphic pop()
    real scalar size()
    virtual string scalar kind()
    static real scalar made
  protected:
    pointer colvector items
}
void stack::new() {
    if (made >= .) made = 0
    made++
}
void stack::push(transmorphic x)
{
    transmorphic copy

    copy = x
    items = items \ &copy
}
transmorphic stack::pop()
{
    transmorphic x

    x = *items[rows(items)]
    if (rows(items)==1) items = J(0, 1, NULL)
    else items = items[|1 \ rows(items)-1|]
    return(x)
}
real scalar stack::size() return(rows(items))
string scalar stack::kind() return("stack")
class counted extends stack {
    real scalar pushes
    void push()
    virtual string scalar kind()
}
void counted::push(transmorphic x)
{
    pushes = pushes >= . ? 1 : pushes + 1
    super.push(x)
}
string scalar counted::kind() return("counted " + super.kind())
void trial()
{
    class counted scalar c
    class stack scalar s
    pointer(class stack scalar) scalar p

    c.push(1)
    c.push("two")
    c.push((3,3,3))
    (c.size(), c.pushes, c.made)
    c.pop()
    c.pop()
    c.size()
    s.kind()
    p = &c
    p->kind()
}
trial()
end
