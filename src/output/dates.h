// output/dates.h - dates and times, digit by digit.
//
//   letter  unit since 1960           letter  unit since 1960
//   d       days                      h       half-years
//   w       weeks (52 a year)         y       years, the calendar year itself
//   m       months                    c       milliseconds
//   q       quarters                  C       milliseconds with leap seconds
//
// Week 1 of a year starts on 1 January and week 52 takes what is left. Sunday is day 0. The
// calendar is the Gregorian one throughout, years 100 to 9999. Every function gives misval
// for a missing or impossible argument. Fractions of an argument are cut downward.
#pragma once
#include <cstddef>
#include <cstdint>

double dt_mdy(double m, double d, double y);              // day number
double dt_dhms(double day, double h, double mi, double s);
double dt_Cdhms(double day, double h, double mi, double s);
double dt_hms(double h, double mi, double s);
double dt_Chms(double h, double mi, double s);
void dt_ymd(double day, int32_t *y, int32_t *m, int32_t *d);  // day must be in range
bool dt_inrange(double day);
double dt_year(double day);
double dt_month(double day);
double dt_day(double day);
double dt_dow(double day);
double dt_doy(double day);
double dt_week(double day);
double dt_quarter(double day);
double dt_halfyear(double day);
double dt_fromday(double day, char unit);   // w m q h y: the unit a day falls in
double dt_today(double z, char unit);       // first day of a w m q h y; d is the identity
double dt_yw(double y, double w);
double dt_ym(double y, double m);
double dt_yq(double y, double q);
double dt_yh(double y, double h);
double dt_Cofc(double c);                   // add and take off leap seconds
double dt_cofC(double C);
double dt_dofc(double c);
double dt_dofC(double C);
double dt_hh(double c);
double dt_mm(double c);
double dt_ss(double c);                     // seconds with their fraction
double dt_hhC(double C);
double dt_mmC(double C);
double dt_ssC(double C);
double dt_mdyhms(double m, double d, double y, double h, double mi, double s);
double dt_Cmdyhms(double m, double d, double y, double h, double mi, double s);
// Spans of time: milliseconds as hours, minutes and seconds, and back.
inline double dt_hours(double ms) { return ms / 3600000; }
inline double dt_minutes(double ms) { return ms / 60000; }
inline double dt_seconds(double ms) { return ms / 1000; }
inline double dt_msofhours(double h) { return h * 3600000; }
inline double dt_msofminutes(double mi) { return mi * 60000; }
inline double dt_msofseconds(double s) { return s * 1000; }

// Text to date. mask holds the letters of the parts in their order: D M Y, with 19Y or 20Y
// for a century, h m s, # for a part to be skipped; blanks do not count. pivot is the last
// year a two-digit year may mean, misval without one. kind d, c or C says what comes back.
double ovclock(const char *text, const char *mask, double pivot, char kind);
// The older form: mask of d m y with [##] for a century.
double ovdate(const char *text, const char *mask, double pivot);
// Masks of two letters, y and one of h q m w, or y alone; unit says which.
double ovyhqmwd(const char *text, const char *mask, double pivot, char unit);

// Writes z by the letter codes of a date format (the default ones when codes is empty) into
// out. Returns the length; a missing z is written as . or its letter.
int32_t dt_format(char *out, size_t n, double z, char unit, const char *codes);
int32_t dt_fmtwidth(char unit, const char *codes);
extern const char *const dt_mons[12], *const dt_months[12], *const dt_wdays[7],
    *const dt_weekdays[7];
