// A caller's buffer between two canaries, filled with a pattern that shows what was written.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>

template <std::size_t Size>
class Guarded {
  public:
    static constexpr char kUntouched = '\x5A';

    Guarded() { all_.fill(kUntouched); }

    char *data() { return all_.data() + kCanary; }
    unsigned char *bytes() { return reinterpret_cast<unsigned char *>(data()); }

    // Fills it as a caller does who hands over this text.
    void set(const std::string &text) {
        std::copy(text.begin(), text.end(), data());
        data()[text.size()] = '\0';
    }

    // The first `count` bytes.
    std::string first(std::size_t count) { return {data(), count}; }

    // Nothing was written from this place on, nor before the buffer.
    bool untouched_from(std::size_t place) {
        const auto is_fresh = [](char c) { return c == kUntouched; };
        return std::all_of(all_.begin(), all_.begin() + kCanary, is_fresh) &&
               std::all_of(all_.begin() + kCanary + place, all_.end(), is_fresh);
    }

  private:
    static constexpr std::size_t kCanary = 64;
    std::array<char, kCanary + Size + kCanary> all_;
};
