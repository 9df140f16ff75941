// Printing a text as a format that has no arguments.
#ifndef CLOUDAGENT_SUPPORT_BARE_FORMAT_H
#define CLOUDAGENT_SUPPORT_BARE_FORMAT_H

#include <cstdio>

// Prints text to out as printf would, with a stand-in for every argument it asks for: 0, 0.0,
// "(null)", a zero byte; %n stores nothing. Whatever the text holds, no memory but the text is read
// or written. False when the output fails or a conversion is cut short by the end of the text.
bool bare_format(std::FILE *out, const char *text) noexcept;

#endif
