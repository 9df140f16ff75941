// Printing a text as a format that has no arguments.
#pragma once

#include <cstdio>

namespace cloudagent {

// Prints text to out as printf would, with 0, 0.0, a null pointer or a zero byte for every argument;
// %n stores nothing. Never reads or writes memory outside text. False where printf reports an error: a
// failed output, a conversion that the text ends, a width or precision that no int holds.
bool bare_format(std::FILE *out, const char *text) noexcept;

}  // namespace cloudagent
