#include "tests/faults/disturbance.h"

#include <sstream>
#include <stdexcept>

#include "tests/faults/syscalls/faulty_calls.h"

namespace reliability {
namespace {

const char *name_of(Caller caller) { return caller == Caller::program ? "program" : "command"; }

// Finds the entry of that name; throws when there is none.
template <class Entry>
size_t find_named(const std::vector<Entry> &entries, const std::string &name) {
    for (size_t i = 0; i < entries.size(); ++i)
        if (entries[i].name == name)
            return i;
    throw std::runtime_error("unknown: " + name);
}

}  // namespace

std::string Disturbance::text() const {
    const std::string number = "," + std::to_string(at);
    switch (trouble) {
        case Trouble::none:
            return "none";
        case Trouble::allocation:
            return (onward ? "allocations-from" : "allocation") + number;
        case Trouble::kill:
            return "kill," + std::string(name_of(caller)) + number;
        case Trouble::call:
            break;
    }
    const FaultyCall &faulty = faulty_calls()[call];
    return std::string("call,") + name_of(caller) + "," + faulty.name + "," +
           faulty.errors[error].name + number;
}

Disturbance read_disturbance(const std::string &text) {
    std::istringstream words(text);
    std::string word;
    const auto next = [&] {
        if (!std::getline(words, word, ','))
            throw std::runtime_error("incomplete: " + text);
        return word;
    };
    Disturbance result;
    const std::string trouble = next();
    if (trouble == "none")
        return result;
    if (trouble == "call" || trouble == "kill") {
        result.trouble = trouble == "call" ? Trouble::call : Trouble::kill;
        result.caller = next() == name_of(Caller::command) ? Caller::command : Caller::program;
    } else {
        result.trouble = Trouble::allocation;
        result.onward = trouble == "allocations-from";
    }
    if (trouble == "call") {
        result.call = find_named(faulty_calls(), next());
        result.error = find_named(faulty_calls()[result.call].errors, next());
    }
    result.at = std::stol(next());
    return result;
}

}  // namespace reliability
