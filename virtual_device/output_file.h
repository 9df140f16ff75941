/* A file that the caller asked for; opened before entering the world, which may hide its path. */
#pragma once

#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>

namespace world {

struct CloseFile {
    void operator()(FILE *file) const { std::fclose(file); }
};
using OutputFile = std::unique_ptr<FILE, CloseFile>;

// None for an empty path; throws std::runtime_error when it cannot be written.
inline OutputFile open_output(const std::string &path) {
    OutputFile file(path.empty() ? nullptr : std::fopen(path.c_str(), "we"));
    if (!file && !path.empty())
        throw std::runtime_error("cannot write " + path);
    return file;
}

}  // namespace world
