// interp/findfile.h - the installation and the search path, set up once by start-up. The
// searches themselves are declared in interp/interp.h.
#pragma once
#include <cstdint>

// Finds the installation, fills the directories behind the code words and sets S_ADO.
// Returns 0, or 1 when there is no installation.
int32_t get_ovata_dir();
extern char filepath[4096];  // PATH as it was at the start
