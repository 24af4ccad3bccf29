// Where lines meet boxes and ellipses, and interpolation between scattered points.
//
//   a segment  (x1, y1, x2, y2)         a box      (xmin, ymin, xmax, ymax)
//   a ray      its angle, radians       an ellipse (x, y, a, b [, angle]) of half axes a and b,
//              against the clock                   a turned by the angle
#include "core/missing.h"
#include "mosa/bi_kern.h"
#include "mosa/bihandlers.h"
#include <algorithm>
#include <cmath>

namespace
{

struct point {
    double x, y;
};
struct segment {
    point a, b;
    point at(double t) const { return {a.x + t * (b.x - a.x), a.y + t * (b.y - a.y)}; }
};

// A vector of least to most numbers, none missing, into to.
bool numbers(matobj *arg, int32_t least, int32_t most, double *to)
{
    bi_in a(arg);
    if (!a)
        return false;
    if (!a.isvector() || a.count() < least || a.count() > most)
        return bi_fail(3200);
    if (!bi_nomissing(a))
        return false;
    std::copy(a.p, a.p + a.count(), to);
    return true;
}

bool a_segment(matobj *arg, segment *s)
{
    double z[4];
    if (!numbers(arg, 4, 4, z))
        return false;
    *s = {{z[0], z[1]}, {z[2], z[3]}};
    return true;
}

struct box {
    double lo[2], hi[2];
};
bool a_box(matobj *arg, box *b)
{
    double z[4];
    if (!numbers(arg, 4, 4, z))
        return false;
    *b = {{std::min(z[0], z[2]), std::min(z[1], z[3])},
          {std::max(z[0], z[2]), std::max(z[1], z[3])}};
    return true;
}

struct ellipse {
    double x, y, a, b, cos, sin;
    // The point as the ellipse sees it: its axes along the coordinates, both of length 1.
    point inside(point p) const
    {
        double u = p.x - x, v = p.y - y;
        return {(u * cos + v * sin) / a, (v * cos - u * sin) / b};
    }
};
bool an_ellipse(matobj *arg, ellipse *e)
{
    double z[5] = {};
    if (!numbers(arg, 4, 5, z))
        return false;
    if (!(z[2] > 0 && z[3] > 0))
        return bi_fail(3300);
    *e = {z[0], z[1], z[2], z[3], std::cos(z[4]), std::sin(z[4])};
    return true;
}

void points(int32_t argc, const point *p, int32_t n)
{
    bi_new r(n, 2);
    if (!r)
        return;
    for (int32_t k = 0; k < n; k++) {
        r.p[2 * k] = p[k].x;
        r.p[2 * k + 1] = p[k].y;
    }
    r.result(argc);
}

// Crossings with the ellipse at t of the line; within 0 to 1 unless endless. How many.
int32_t crossings(const ellipse &e, const segment &s, bool endless, point *out)
{
    point p = e.inside(s.a), q = e.inside(s.b), d{q.x - p.x, q.y - p.y};
    double a = d.x * d.x + d.y * d.y, b = p.x * d.x + p.y * d.y, c = p.x * p.x + p.y * p.y - 1;
    double disc = b * b - a * c;
    if (a == 0 || disc < 0)
        return 0;
    double root = std::sqrt(disc), big = b >= 0 ? -b - root : -b + root;
    double t[2] = {big / a, big != 0 ? c / big : -b / a};
    if (t[0] > t[1])
        std::swap(t[0], t[1]);
    int32_t n = 0;
    for (int32_t k = 0; k < (disc == 0 ? 1 : 2); k++)
        if (endless || (t[k] >= 0 && t[k] <= 1))
            out[n++] = s.at(t[k]);
    return n;
}

void ellipse_line(int32_t argc, const char *id, bool endless)
{
    m_xeqerrid = id;
    ellipse e;
    segment s;
    point p[2];
    if (an_ellipse(m_arg(1), &e) && a_segment(m_arg(0), &s))
        points(argc, p, crossings(e, s, endless, p));
}

} // namespace

// _geo_line_intersect(segment, segment): the point they share, missing when there is none or
// they run along each other.
void bi_geo_line_intersect(int32_t argc)
{
    m_xeqerrid = "_geo_line_intersect()";
    segment s, z;
    if (!a_segment(m_arg(1), &s) || !a_segment(m_arg(0), &z))
        return;
    double ax = s.b.x - s.a.x, ay = s.b.y - s.a.y, bx = z.b.x - z.a.x, by = z.b.y - z.a.y;
    double cx = z.a.x - s.a.x, cy = z.a.y - s.a.y, den = ax * by - ay * bx;
    double t = (cx * by - cy * bx) / den, u = (cx * ay - cy * ax) / den;
    point p{misval, misval};
    if (den != 0 && t >= 0 && t <= 1 && u >= 0 && u <= 1)
        p = s.at(t);
    points(argc, &p, 1);
}

// _geo_boxline_intersect(box, segment): where the segment enters and leaves the box, in that
// order, 0 to 2 rows (Liang and Barsky, ACM Transactions on Graphics 3 (1984) 1).
void bi_geo_boxline_intersect(int32_t argc)
{
    m_xeqerrid = "_geo_boxline_intersect()";
    box b;
    segment s;
    if (!a_box(m_arg(1), &b) || !a_segment(m_arg(0), &s))
        return;
    double from = -HUGE_VAL, to = HUGE_VAL;
    const double start[2] = {s.a.x, s.a.y}, way[2] = {s.b.x - s.a.x, s.b.y - s.a.y};
    for (int k = 0; k < 2; k++) {
        if (way[k] == 0) {
            if (start[k] < b.lo[k] || start[k] > b.hi[k])
                to = -HUGE_VAL;
            continue;
        }
        double t1 = (b.lo[k] - start[k]) / way[k], t2 = (b.hi[k] - start[k]) / way[k];
        from = std::max(from, std::min(t1, t2));
        to = std::min(to, std::max(t1, t2));
    }
    point p[2];
    int32_t n = 0;
    if (from <= to && from >= 0 && from <= 1)
        p[n++] = s.at(from);
    if (from < to && to >= 0 && to <= 1)
        p[n++] = s.at(to);
    points(argc, p, n);
}

// _geo_ellipseline_intersect(ellipse, segment): likewise, where it crosses the ellipse.
void bi_geo_ellipseline_intersect(int32_t argc)
{
    ellipse_line(argc, "_geo_ellipseline_intersect()", false);
}
// _geo_ellipseline_intersect2(): the same of the endless line through both points.
void bi_geo_ellipseline_intersect2(int32_t argc)
{
    ellipse_line(argc, "_geo_ellipseline_intersect2()", true);
}

// _geo_boxangle_intersect(box, angle): where the ray from the middle of the box leaves it.
void bi_geo_boxangle_intersect(int32_t argc)
{
    m_xeqerrid = "_geo_boxangle_intersect()";
    box b;
    double angle;
    if (!a_box(m_arg(1), &b) || !numbers(m_arg(0), 1, 1, &angle))
        return;
    double c = std::cos(angle), s = std::sin(angle);
    double w = (b.hi[0] - b.lo[0]) / 2, h = (b.hi[1] - b.lo[1]) / 2;
    double t = std::min(c != 0 ? w / std::fabs(c) : HUGE_VAL, s != 0 ? h / std::fabs(s) : HUGE_VAL);
    point p{b.lo[0] + w + t * c, b.lo[1] + h + t * s};
    points(argc, &p, 1);
}

// _geo_ellipseangle_intersect(ellipse, angle): the same of an ellipse.
void bi_geo_ellipseangle_intersect(int32_t argc)
{
    m_xeqerrid = "_geo_ellipseangle_intersect()";
    ellipse e;
    double angle;
    if (!an_ellipse(m_arg(1), &e) || !numbers(m_arg(0), 1, 1, &angle))
        return;
    double c = std::cos(angle), s = std::sin(angle);
    point u = e.inside({e.x + c, e.y + s});
    double t = 1 / std::hypot(u.x, u.y);
    point p{e.x + t * c, e.y + t * s};
    points(argc, &p, 1);
}

// ---- scattered points

static double distance2(const double *a, const double *b, int32_t d)
{
    double z = 0;
    for (int32_t k = 0; k < d; k++)
        z += (a[k] - b[k]) * (a[k] - b[k]);
    return z;
}

// _rbf_tps_setup(X [, smooth]): the equations of the thin plate spline through the rows of X, of
// 1 to 3 columns: (K + smooth I, P \ P', 0) with P = (1, X) and K of r^3, r^2 ln r, r (Duchon, in
// Constructive Theory of Functions of Several Variables, 1977, 85).
void bi_rbf_tps_setup(int32_t argc)
{
    m_xeqerrid = "_rbf_tps_setup()";
    bi_in x(bi_arg(argc, 1));
    double smooth = 0;
    if (!x || (argc > 1 && !bi_real(m_arg(0), &smooth)))
        return;
    int32_t n = x.rows, d = x.cols;
    if (d < 1 || d > 3 || n > 2147483640) {
        m_xrc = 3200;
        return;
    }
    if (!bi_nomissing(x) || (!(smooth < misval) && !bi_fail(3351)))
        return;
    bi_new r(n + d + 1, n + d + 1);
    if (!r)
        return;
    r.zero();
    int64_t w = n + d + 1;
    for (int64_t i = 0; i < n; i++) {
        if (row_break())
            return;
        for (int64_t j = 0; j < i; j++) {
            double q = distance2(x.p + i * d, x.p + j * d, d), root = std::sqrt(q);
            double z = d == 1 ? q * root : d == 3 ? root : q > 0 ? q * std::log(q) / 2 : 0;
            r.p[i * w + j] = r.p[j * w + i] = z;
        }
        r.p[i * w + i] = smooth;
        r.p[i * w + n] = r.p[int64_t(n) * w + i] = 1;
        for (int32_t k = 0; k < d; k++)
            r.p[i * w + n + 1 + k] = r.p[(int64_t(n) + 1 + k) * w + i] = x.p[i * d + k];
    }
    r.result(argc);
}

// _rbf_shepard(X, y, Z [, p]): at each row of Z the mean of y weighted with distance to the rows
// of X to the power -p, 2 when not given (Shepard, Proceedings ACM National Conference 1968, 517).
void bi_rbf_shepard(int32_t argc)
{
    m_xeqerrid = "_rbf_shepard()";
    bi_in x(bi_arg(argc, 1));
    if (!x)
        return;
    bi_in y(bi_arg(argc, 2));
    if (!y)
        return;
    bi_in z(bi_arg(argc, 3));
    double power = 2;
    if (!z || (argc > 3 && !bi_real(m_arg(0), &power)))
        return;
    if (y.cols != 1 || y.rows != x.rows || z.cols != x.cols) {
        m_xrc = 3200;
        return;
    }
    if (!(power > 0 && power < misval)) {
        m_xrc = 3300;
        return;
    }
    if (!bi_nomissing(x) || !bi_nomissing(y))
        return;
    bi_new r(z.rows, 1);
    if (!r)
        return;
    for (int64_t i = 0; i < z.rows; i++) {
        if (row_break())
            return;
        const double *at = z.p + i * z.cols;
        double sum = 0, total = 0, exact = misval;
        for (int64_t k = 0; k < x.rows; k++) {
            double q = distance2(at, x.p + k * x.cols, x.cols);
            if (q == 0) {
                exact = y.p[k];
                break;
            }
            double w = std::pow(q, -power / 2);
            sum += w * y.p[k];
            total += w;
        }
        bool gap = std::any_of(at, at + z.cols, [](double v) { return v >= misval; });
        double v = exact < misval ? exact : sum / total;
        r.p[i] = !gap && std::fabs(v) < misval ? v : misval;
    }
    r.result(argc);
}
