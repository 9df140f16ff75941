// Bytes as the digest tests write them.
#pragma once

#include <cstdio>
#include <string>

inline std::string as_hex(const std::string &bytes) {
    std::string text;
    for (const char byte : bytes) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", static_cast<unsigned char>(byte));
        text += digits;
    }
    return text;
}

inline std::string as_hex(const unsigned char *bytes, std::size_t count) {
    return as_hex({reinterpret_cast<const char *>(bytes), count});
}

inline const unsigned char *bytes_of(const std::string &text) {
    return reinterpret_cast<const unsigned char *>(text.data());
}
