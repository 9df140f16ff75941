// Parametrised tests are named after the `name` of their row.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <string>

struct RowName {
    template <class Row>
    std::string operator()(const testing::TestParamInfo<Row> &info) const {
        std::string name = info.param.name;
        std::replace_if(
            name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
        return name;
    }
};
