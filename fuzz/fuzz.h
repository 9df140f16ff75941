/*
 * Shared by the fuzz targets. A target is a file NAME_fuzz.cpp that defines fuzz::target, a row in
 * the file `targets`, and handwritten and minimised inputs in corpus/NAME/. With clang it is a
 * libFuzzer program; with other compilers replay_main.cpp runs it over its corpus.
 */
#pragma once

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

// A finding, unless the condition holds: aborts and prints the place.
#define REQUIRE(condition) fuzz::require((condition), #condition, __FILE__, __LINE__)

namespace fuzz {

inline void require(bool holds, const char *condition, const char *file, int line) {
    if (!holds) {
        std::fprintf(stderr, "%s:%d: this does not hold: %s\n", file, line, condition);
        std::abort();
    }
}

// One input, read from its beginning. Parts are lines, or blocks separated by lines of "--", so
// that inputs can be written by hand.
class Input {
  public:
    Input(const uint8_t *data, std::size_t size)
        : rest_(reinterpret_cast<const char *>(data), size) {}

    bool empty() const { return rest_.empty(); }
    std::string_view rest() const { return rest_; }

    std::string_view line() { return take(rest_.find('\n'), 1); }

    std::string_view block() {
        if (rest_.substr(0, kMark.size()) == kMark) {
            return take(0, kMark.size());
        }
        return take(rest_.find(kLaterMark), kLaterMark.size());
    }

  private:
    static constexpr std::string_view kMark = "--\n";
    static constexpr std::string_view kLaterMark = "\n--\n";

    std::string_view take(std::size_t length, std::size_t mark) {
        const std::string_view part = rest_.substr(0, length);
        rest_.remove_prefix(length == std::string_view::npos ? rest_.size() : length + mark);
        return part;
    }

    std::string_view rest_;
};

// Each target defines one. It runs in a private world (testing/private_world.h). The product's calls
// of system, kill and sleep are findings, unless begin() answers them (testing/calls.h). After each
// input all files must be closed, and all handles and header lists of libcurl freed.
struct Target {
    void (*try_input)(Input input);
    void (*begin)() = nullptr;  // once, in the world
};
extern const Target target;

// A C text on the heap: AddressSanitizer detects a read past its end.
inline std::unique_ptr<char[]> c_text(std::string_view text) {
    std::unique_ptr<char[]> copy(new char[text.size() + 1]);
    text.copy(copy.get(), text.size());
    copy[text.size()] = '\0';
    return copy;
}

// A zeroed buffer on the heap: AddressSanitizer detects a write past its end.
inline std::unique_ptr<char[]> zeroed(std::size_t size) {
    return std::unique_ptr<char[]>(new char[size]());
}

inline bool contains(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

inline bool begins_with(std::string_view text, std::string_view part) {
    return text.substr(0, part.size()) == part;
}

// ---- Fast access to small files ----

void write_descriptor(int descriptor, std::string_view content);
void write_file(const char *path, std::string_view content);
inline bool exists(const char *path) { return access(path, F_OK) == 0; }

}  // namespace fuzz
