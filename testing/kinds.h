/*
 * The one table of dump kinds for tests and the virtual device: what each kind sends and leaves
 * behind. It is written apart from the program's own table, which it checks.
 */
#pragma once

#include <array>
#include <string>
#include <vector>

namespace world {

struct Dump {
    std::string source;
    std::string staged;                 // its copy under /tmp; empty: the source itself is sent
    size_t size;                        // on a new virtual device, in bytes
    std::array<const char *, 4> lines;  // it is filled with these; each has one %u
};

struct Kind {
    std::string name;
    std::vector<std::string> words;  // kdump's arguments
    std::string marker;
    std::vector<Dump> dumps;
    bool retries_forever = false;  // a failed upload
    bool sends_archive = false;    // of the configuration folder, which stays
    std::string copied;            // a copy that may stay under /tmp
    bool reboots = false;
    bool is_variant = false;  // of the kind before it: same marker, same dumps

    bool asks_for_url() const { return !dumps.empty() || !copied.empty(); }
};

const std::vector<Kind> &kinds();

// Throws std::out_of_range.
const Kind &kind_named(const std::string &name);

// The dumps of all kinds, each once.
const std::vector<Dump> &all_dumps();

}  // namespace world
