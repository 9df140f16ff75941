/*
 * The kinds of dump as a device's owner knows them: what is sent, under which marker, and what the
 * program may touch. Written down apart from the program's own table, which it checks.
 */
#pragma once

#include <set>
#include <string>
#include <vector>

namespace reliability {

struct Dump {
    std::string source;
    std::string staged;  // its copy under /tmp; empty: the source itself is sent
};

struct Kind {
    std::string name;
    std::vector<std::string> words;  // kdump's arguments
    std::string marker;
    std::vector<Dump> dumps;
    bool retries_without_end = false;  // a failed upload, that is
    bool sends_archive = false;        // of the configuration folder, which itself stays
    bool reboots = false;
    std::string copied;  // a file that is copied to this path and not sent
};

const std::vector<Kind> &kinds();

// Whether a file may differ after a run of this kind.
enum class Change { none, removal, any };
Change allowed_change(const Kind &kind, const std::string &path);

}  // namespace reliability
