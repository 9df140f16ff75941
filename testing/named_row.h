// Rows of parametrised tests: a row's name is the test's name, and messages show it.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <ostream>
#include <string>

struct NamedRow {
    std::string name;
};

inline std::ostream &operator<<(std::ostream &out, const NamedRow &row) { return out << row.name; }

struct RowName {
    template <class Row>
    std::string operator()(const testing::TestParamInfo<Row> &info) const {
        std::string name = info.param.name;
        std::replace_if(
            name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
        return name;
    }
};
