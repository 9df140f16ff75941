/* The system calls that are made to fail, and how each may. */
#pragma once

#include <string>
#include <vector>

namespace reliability {

struct CallError {
    std::string name;
    int number;  // 0: the call does less than it was asked to
};

struct FaultyCall {
    std::string name;
    std::vector<long> numbers;
    std::vector<CallError> errors;
    bool is_done = false;   // the call takes effect although it fails
    bool is_sized = false;  // its third argument says how much
    int path_argument = 0;  // which one is the path, from 1; 0: none
};

const std::vector<FaultyCall> &faulty_calls();

}  // namespace reliability
