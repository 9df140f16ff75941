// Every log line that the sources can write, found in their text.
#pragma once

#include <map>
#include <set>
#include <string>
#include <tuple>

struct LogLine {
    std::string where;    // source file; "every kind" for a line whose number is a kind's
    std::string speaker;  // function name it begins with, or ""
    std::string number;   // site number, or ""; of "every kind" the name of the number's field
    std::string text;     // the format as written in the source

    bool operator<(const LogLine &other) const {
        return std::tie(where, speaker, number, text) <
               std::tie(other.where, other.speaker, other.number, other.text);
    }
    bool operator==(const LogLine &other) const { return !(*this < other) && !(other < *this); }
};

// Source texts by file name.
using Sources = std::map<std::string, std::string>;

// The texts of all calls of cloud_log and printf, with speaker and number. What a call takes from
// its function's parameters is looked for at the calls of that function, what it takes from a
// table, in the table's rows.
std::set<LogLine> log_lines(const Sources &sources);
