// Numbers as texts: finding and reading them in a document, and the text each is printed as.
#ifndef CLOUDAGENT_JSON_PARSER_NUMBERS_H
#define CLOUDAGENT_JSON_PARSER_NUMBERS_H

#include <cstddef>

#include "json_parser/json_parser.h"

// What the numbers of a document are read as: JSON_KIND_NUMBER or JSON_KIND_UINT64.
enum class NumberMode { kDouble, kUint64 };

// The first byte from `at` on that begins a number ("-" or a digit, outside strings), or the end.
const char *find_number(const char *at) noexcept;

// The end of the number that begins there; its beginning for a "-" that the mode does not read.
const char *number_end(const char *begin, NumberMode mode) noexcept;

// Reads a number into a node. scratch has room for its text and a terminator.
void read_number(JsonNode &node, const char *begin, NumberMode mode, char *scratch) noexcept;

// Room for the text of any number: 60 digits, a sign and the terminator, and a few to spare.
constexpr std::size_t kNumberSpace = 64;

bool is_number_kind(int kind) noexcept;

// Prints a number and returns the length; `text` has kNumberSpace bytes.
std::size_t print_number(const JsonNode &node, char *text) noexcept;

#endif
