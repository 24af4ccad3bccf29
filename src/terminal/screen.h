// terminal/screen.h - the terminal by its description, and its modes.
#pragma once
#include <cstdint>

// Reads the description of TERM. False when there is none, or when it is a terminal that
// cannot move its cursor. Asked more than once, it reads once.
bool sc_open();
bool sc_size(int32_t *lines, int32_t *columns); // as described; false when it does not tell
// Control texts; empty when the terminal lacks them.
const char *sc_clear();     // the whole screen
const char *sc_clearline(); // from the cursor to the end of the line
const char *sc_cleardown();  // from the cursor to the end of the screen
const char *sc_up();         // a row up, same column
const char *sc_standout(bool on);
const char *sc_sane(); // attributes off, the cursor shown

// The modes of the terminal as they are now, and back to them.
void sc_remember();
void sc_restore();
