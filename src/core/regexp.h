// core/regexp.h - regular expressions.
//
// POSIX-like: . [] [[:class:]] * + ? {m,n} | () ^ $ and backslash escapes. Matching is
// leftmost-longest and takes time linear in the text, whatever the pattern. The last
// successful match is remembered, with a copy of its text, until the next one.
#pragma once
#include <cstddef>
#include <cstdint>

// 1 match, 0 none, -1 the pattern is not valid (why holds up to len bytes of reason).
int32_t regx_match(const char *text, const char *pattern, char *why, size_t len);
// Replaces the first match in text by subst (\0 to \9 stand for subexpressions) into out,
// cut to max bytes and terminated. Without a match, or with a bad pattern, out is text.
void regx_replace(const char *text, const char *pattern, const char *subst, char *out, size_t max);
// Subexpression n (0 the whole match) of the last match into out. Returns 0; 1 when nothing
// was matched yet; 2 when n is past the last subexpression. out is empty in both cases.
int32_t regx_sub(int32_t n, char *out, size_t max);
// Number of subexpressions of the last match, or -1 before any.
int32_t regx_nsub();
