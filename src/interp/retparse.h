// interp/retparse.h - what the commands over stored results share in reading their lines.
#pragma once
#include <cstdint>

int32_t ret_at_end();                   // 0, or the words for what still stands there
void ret_category();                    // an optional category before a subcommand
int32_t ret_result_name(char name[33]);
int32_t ret_set_scalar(int32_t kind);   // kind RK_E or RK_RETURN
int32_t ret_set_matrix(int32_t kind);
int32_t ret_list_store(int32_t kind);
int32_t ret_drop_held(int32_t kind);    // names, or _all
