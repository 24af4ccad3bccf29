// data/dsa_cells.cpp - cells in and out, and moves of whole rows.
#include "data/dsa_int.h"
#include "data/variables.h"

int32_t dsa_bytlenc(uint8_t type)
{
    static const uint8_t width[] = {1, 2, 4, 4, 8, 1, 2, 4, 4, 8};
    if (type <= T_STRMAX)
        return type;
    return type >= T_BYTE110 ? width[type - T_BYTE110] : 0;
}

void dsa_rebuild_offsettab(dsa_area *d)
{
    uint32_t at = 0;
    for (uint32_t k = 0; k < d->K; k++) {
        d->offset[k] = at;
        at += uint32_t(dsa_bytlenc(d->typ[k]));
    }
    d->lrec = at;
}

template <class T> static inline T load(const char *at)
{
    T v;
    memcpy(&v, at, sizeof v);
    return v;
}
template <class T> static inline void put(char *at, T v) { memcpy(at, &v, sizeof v); }

// Widened without the processor's conversion, which would turn patterns of no number around.
static inline double missing_of_float(uint32_t bits)
{
    return std::bit_cast<double>((uint64_t{0x7FE} << 52) | (uint64_t(bits & 0x7fffff) << 29));
}

double ovdouble_of_stbyte(int32_t v) { return v < 101 ? v : mis_of(v - 101); }
double ovdouble_of_stint(int32_t v) { return v < 32741 ? v : mis_of((v + 27) & 0xff); }
double ovdouble_of_ovlong(int32_t v)
{
    return v < 2147483621 ? v : mis_of(int((uint32_t(v) + 27) & 0xff));
}
double ovdouble_of_ovfloatp(const float *p)
{
    return *p < fltmis ? double(*p) : missing_of_float(std::bit_cast<uint32_t>(*p));
}

static inline uint32_t exponent(double z)
{
    return uint32_t(std::bit_cast<uint64_t>(z) >> 52) & 0x7ff;
}

// One rule for the three integer types. limit is the power of 2 whose exponent is too large.
static inline int32_t stored_int(double z, double limit, int32_t most)
{
    if (z > -limit && z < limit) {
        auto v = int32_t(z);
        return v > most ? most + 1 : v;
    }
    int k = exponent(z) == 2046 ? mis_letter(z) : 0;
    return most + 1 + (k < 27 ? k : 0);
}
int32_t ovbyte_of_ovdouble(double z) { return stored_int(z, 0x1p7, 100); }
int32_t ovint_of_ovdouble(double z) { return stored_int(z, 0x1p15, 32740); }
int32_t ovlong_of_ovdouble(double z) { return stored_int(z, 0x1p31, 2147483620); }

static inline float stored_float(double z)
{
    uint32_t e = exponent(z);
    if (e >= 896 && e <= 1149)
        return float(z);
    if (e == 2046 && z > 0) {
        uint64_t frac = std::bit_cast<uint64_t>(z) & ((uint64_t{1} << 52) - 1);
        return float(std::bit_cast<double>((uint64_t{1150} << 52) | frac));
    }
    return e < 896 ? 0.0f : fltmis;
}

int32_t ovfloat(double value, float *out)
{
    *out = stored_float(value);
    return *out >= fltmis;
}

static inline int32_t old_int(double z, double limit, int32_t missing)
{
    return z > -limit && z < limit ? int32_t(z) : missing;
}

static inline float old_float(double z)
{
    int32_t u = int32_t(exponent(z)) - 1023;
    return u >= 125 ? fltmis_110 : u > -121 ? float(z) : 0.0f;
}

double cell_data(uint8_t type, const char *at)
{
    switch (type) {
    case T_BYTE:
        return ovdouble_of_stbyte(load<int8_t>(at));
    case T_INT:
        return ovdouble_of_stint(load<int16_t>(at));
    case T_LONG:
        return ovdouble_of_ovlong(load<int32_t>(at));
    case T_FLOAT: {
        float v = load<float>(at);
        return v < fltmis ? double(v) : missing_of_float(load<uint32_t>(at));
    }
    case T_DOUBLE:
        return load<double>(at);
    case T_BYTE110: {
        int8_t v = load<int8_t>(at);
        return v == bytemis_110 ? misval : v;
    }
    case T_INT110: {
        int16_t v = load<int16_t>(at);
        return v == intmis_110 ? misval : v;
    }
    case T_LONG110: {
        int32_t v = load<int32_t>(at);
        return v == longmis_110 ? misval : v;
    }
    case T_FLOAT110: {
        float v = load<float>(at);
        return v < fltmis_110 ? double(v) : misval;
    }
    case T_DOUBLE110: {
        double v = load<double>(at);
        return v < misval_110 ? v : misval;
    }
    default:
        return misval;
    }
}

void cell_store(double value, uint8_t type, char *at)
{
    switch (type) {
    case T_BYTE:
        return put(at, int8_t(ovbyte_of_ovdouble(value)));
    case T_INT:
        return put(at, int16_t(ovint_of_ovdouble(value)));
    case T_LONG:
        return put(at, ovlong_of_ovdouble(value));
    case T_FLOAT:
        return put(at, stored_float(value));
    case T_DOUBLE:
    case T_DOUBLE110:
        return put(at, value);
    case T_BYTE110:
        return put(at, int8_t(old_int(value, 0x1p7, bytemis_110)));
    case T_INT110:
        return put(at, int16_t(old_int(value, 0x1p15, intmis_110)));
    case T_LONG110:
        return put(at, old_int(value, 0x1p31, longmis_110));
    case T_FLOAT110:
        return put(at, old_float(value));
    default:
        return;
    }
}

double dsa_data(const dsa_area *d, uint32_t var, uint32_t obs)
{
    return cell_data(d->typ[var - 1], dsa_varobsptr(d, var, obs));
}

void dsa_store(double value, dsa_area *d, uint32_t var, uint32_t obs)
{
    cell_store(value, d->typ[var - 1], dsa_varobsptr(d, var, obs));
}

char *dsa_sdata(const dsa_area *d, uint32_t var, uint32_t obs, char *buffer)
{
    uint8_t n = d->typ[var - 1];
    if (!t_isstr(n))
        n = 0;
    else
        memcpy(buffer, dsa_varobsptr(d, var, obs), n);
    buffer[n] = 0;
    return buffer;
}

void dsa_sstore(dsa_area *d, uint32_t var, uint32_t obs, const char *text)
{
    memcpy(dsa_varobsptr(d, var, obs), text, d->typ[var - 1]);
}

void dsa_safe_sstore(dsa_area *d, uint32_t var, uint32_t obs, const char *text)
{
    char *at = dsa_varobsptr(d, var, obs);
    uint8_t n = d->typ[var - 1];
    if (!t_isstr(n))
        return;
    // Zeros behind the text: equal rows are equal bytes.
    size_t len = strnlen(text, n);
    memcpy(at, text, len);
    memset(at + len, 0, n - len);
}

int32_t dsa_idata(const dsa_area *d, uint32_t var, uint32_t obs)
{
    return load<int32_t>(dsa_varobsptr(d, var, obs));
}
void dsa_istore(int32_t v, dsa_area *d, uint32_t var, uint32_t obs)
{
    put(dsa_varobsptr(d, var, obs), v);
}
uint8_t dsa_bdata(const dsa_area *d, uint32_t var, uint32_t obs)
{
    return uint8_t(*dsa_varobsptr(d, var, obs));
}
void dsa_bstore(uint8_t v, dsa_area *d, uint32_t var, uint32_t obs)
{
    *dsa_varobsptr(d, var, obs) = char(v);
}

void dsa_exchange_obs(dsa_area *d, uint32_t a, uint32_t b)
{
    char *pa = dsa_obsptr(d, a), *pb = dsa_obsptr(d, b), *t = d->segment_table[0];
    if (pa == pb)
        return;
    memcpy(t, pa, d->lrec);
    memcpy(pa, pb, d->lrec);
    memcpy(pb, t, d->lrec);
}

void dsa_cp_obs(dsa_area *d, uint32_t to, uint32_t from)
{
    if (to != from)
        memcpy(dsa_obsptr(d, to), dsa_obsptr(d, from), d->lrec);
}

void dsa_getdtaobs(const dsa_area *d, char *buffer, uint32_t obs, int64_t length)
{
    memcpy(buffer, dsa_obsptr(d, obs), length < 0 ? d->lrec : uint64_t(length));
}

void dsa_putdtaobs(dsa_area *d, const char *buffer, uint32_t obs, int64_t length)
{
    memcpy(dsa_obsptr(d, obs), buffer, length < 0 ? d->lrec : uint64_t(length));
}
