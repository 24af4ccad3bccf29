// commands/labelsub.h - subcommands of label and char that have files of their own.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

[[nodiscard]] int32_t label_language();
[[nodiscard]] int32_t label_check();
[[nodiscard]] int32_t char_notes();
// Tables named on the line, every one when none is; 111 with words for one that is not there.
[[nodiscard]] int32_t label_named(std::vector<std::string> *names);
