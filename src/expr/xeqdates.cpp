// expr/xeqdates.cpp - the date and time operations of the machine.
#include "core/missing.h"
#include "expr/machine.h"
#include "output/dates.h"
#include <cmath>
#include <cstring>

// Functions of one number.
static double one(int32_t op, double x)
{
    switch (op) {
    case OP_DOW: return dt_dow(x);
    case OP_DAY: return dt_day(x);
    case OP_MONTH: return dt_month(x);
    case OP_YEAR: case OP_YOFD: return dt_year(x);
    case OP_DOFY: return dt_today(x, 'y');
    case OP_DOFH: return dt_today(x, 'h');
    case OP_DOFQ: return dt_today(x, 'q');
    case OP_DOFM: return dt_today(x, 'm');
    case OP_DOFW: return dt_today(x, 'w');
    case OP_DOFD: return dt_today(x, 'd');
    case OP_HOFD: return dt_fromday(x, 'h');
    case OP_QOFD: return dt_fromday(x, 'q');
    case OP_MOFD: return dt_fromday(x, 'm');
    case OP_WOFD: return dt_fromday(x, 'w');
    case OP_HALFYEAR: return dt_halfyear(x);
    case OP_QUARTER: return dt_quarter(x);
    case OP_WEEK: return dt_week(x);
    case OP_DOY: return dt_doy(x);
    case OP_COFC_UP: return dt_Cofc(x);
    case OP_COFC_DOWN: return dt_cofC(x);
    case OP_HOURS: return dt_hours(x);
    case OP_MINUTES: return dt_minutes(x);
    case OP_SECONDS: return dt_seconds(x);
    case OP_HH: return dt_hh(x);
    case OP_MM: return dt_mm(x);
    case OP_SS: return dt_ss(x);
    case OP_HHC: return dt_hhC(x);
    case OP_MMC: return dt_mmC(x);
    case OP_SSC: return dt_ssC(x);
    case OP_DOFC: return dt_dofc(x);
    case OP_DOFCC: return dt_dofC(x);
    case OP_COFD: return dt_dhms(x, 0, 0, 0);
    case OP_CCOFD: return dt_Cdhms(x, 0, 0, 0);
    case OP_MSOFHOURS: return dt_msofhours(x);
    case OP_MSOFMINUTES: return dt_msofminutes(x);
    case OP_MSOFSECONDS: return dt_msofseconds(x);
    default: return misval;
    }
}

static bool is_one(int32_t op)
{
    return (op >= OP_DOW && op <= OP_YEAR) || (op >= OP_DOFY && op <= OP_DOY) || op == OP_DOFD
           || op == OP_COFC_UP || op == OP_COFC_DOWN || (op >= OP_HOURS && op <= OP_CCOFD)
           || (op >= OP_MSOFHOURS && op <= OP_MSOFSECONDS);
}

// Text by a mask; three says that a last year for two digits is on the stack.
static void from_text(xeqrun *m, bool three, char kind)
{
    double pivot = three ? *m->sp-- : misval, z;
    const char *text = m->ss[0], *mask = m->ss[-1];
    if (kind == 'o')
        z = ovdate(text, mask, pivot);
    else if (strchr("dcC", kind))
        z = ovclock(text, mask, pivot, kind);
    else
        z = ovyhqmwd(text, mask, pivot, kind);
    m->ss -= 2;
    *++m->sp = z;
}

bool xeq_dates(xeqrun *m, int32_t op)
{
    double *a = m->sp;
    if (is_one(op)) {
        *a = *a < misval ? xq_fin(one(op, *a)) : misval;
        return true;
    }
    if (op >= OP_YEARLY && op <= OP_WEEKLY3) {
        from_text(m, (op - OP_YEARLY) & 1, "yhqmw"[(op - OP_YEARLY) / 2]);
        return true;
    }
    double z;
    int32_t n;
    switch (op) {
    case OP_DATE: case OP_DATE3: from_text(m, op == OP_DATE3, 'd'); return true;
    case OP_CLOCK: case OP_CLOCK3: from_text(m, op == OP_CLOCK3, 'c'); return true;
    case OP_CCLOCK: case OP_CCLOCK3: from_text(m, op == OP_CCLOCK3, 'C'); return true;
    case OP_DATE_OLD: case OP_DATE_OLD3: from_text(m, op == OP_DATE_OLD3, 'o'); return true;
    case OP_YW: z = dt_yw(a[0], a[-1]); n = 2; break;
    case OP_YM: z = dt_ym(a[0], a[-1]); n = 2; break;
    case OP_YQ: z = dt_yq(a[0], a[-1]); n = 2; break;
    case OP_YH: z = dt_yh(a[0], a[-1]); n = 2; break;
    case OP_MDY: z = dt_mdy(a[0], a[-1], a[-2]); n = 3; break;
    case OP_HMS: z = dt_hms(a[0], a[-1], a[-2]); n = 3; break;
    case OP_CHMS: z = dt_Chms(a[0], a[-1], a[-2]); n = 3; break;
    case OP_DHMS: z = dt_dhms(a[0], a[-1], a[-2], a[-3]); n = 4; break;
    case OP_CDHMS: z = dt_Cdhms(a[0], a[-1], a[-2], a[-3]); n = 4; break;
    case OP_MDYHMS:
        z = dt_mdyhms(a[0], a[-1], a[-2], a[-3], a[-4], a[-5]);
        n = 6;
        break;
    case OP_CMDYHMS:
        z = dt_Cmdyhms(a[0], a[-1], a[-2], a[-3], a[-4], a[-5]);
        n = 6;
        break;
    default: return false;
    }
    m->sp -= n - 1;
    *m->sp = xq_fin(z);
    return true;
}
