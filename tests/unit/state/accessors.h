// Every accessor of the state files, one row each.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "testing/named_row.h"

struct Reading {
    const char *content;
    uint32_t value;
};

// Signed values are given as the unsigned number of the same bits.
struct NumberGetter : NamedRow {
    std::function<uint32_t(uint32_t *)> get;
    std::string path;
    uint32_t missing;               // value without a file
    uint32_t null_result;           // result for a null pointer
    std::vector<Reading> readings;  // what the getter makes of a content
    bool returns_value = false;     // the result is the value, else 0
    bool creates_file = false;      // a missing file comes into being
};

struct TextGetter : NamedRow {
    uint32_t (*get)(char *);
    std::string path;
    const char *missing;  // value without a file; null: the buffer stays untouched
    uint32_t null_result;
};

struct TextSetter : NamedRow {
    uint32_t (*set)(const char *);
    std::string path;
    uint32_t refused;  // result when the file cannot be opened or the text is null
};

struct NumberSetter : NamedRow {
    std::function<uint32_t(int64_t)> set;
    std::string path;
    std::vector<int64_t> values;
};

const std::vector<NumberGetter> &number_getters();
const std::vector<TextGetter> &text_getters();
const std::vector<TextSetter> &text_setters();
const std::vector<NumberSetter> &number_setters();
