// Small spaces, tried out whole.
#pragma once

#include <cstdlib>
#include <string>
#include <vector>

namespace world {

// How far the quick tests, `script/test --sample` and `script/test --deep` go.
inline int reach(int quick, int sample, int deep) {
    const char *const given = std::getenv("EXHAUSTIVE");
    const std::string size = given != nullptr ? given : "";
    return size == "deep" ? deep : size == "sample" ? sample : quick;
}

using Symbols = std::vector<std::string>;

inline Symbols each_byte_of(const std::string &bytes) {
    Symbols symbols;
    for (const char byte : bytes) {
        symbols.emplace_back(1, byte);
    }
    return symbols;
}

// Calls attempt with every text that goes on from `text` with up to `length` symbols; returns their
// number.
template <class Attempt>
long each_text(const Symbols &symbols, int length, const Attempt &attempt,
               const std::string &text = "") {
    attempt(text);
    long count = 1;
    if (length > 0) {
        for (const std::string &symbol : symbols) {
            count += each_text(symbols, length - 1, attempt, text + symbol);
        }
    }
    return count;
}

}  // namespace world
