// A recursive parser that shares nothing with the layer: what a text holds, or where it fails.
#pragma once

#include <cctype>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "json_parser/json_parser.h"

inline std::string dump_number(double value) {
    char text[64];
    std::snprintf(text, sizeof text, "d%a", value);
    return text;
}

// The tree as a text in which every value and name shows.
inline std::string dump(const JsonNode *node) {
    std::string text;
    for (; node; node = node->next) {
        text += node->string ? "<" + std::string(node->string) + ">" : "";
        switch (node->type) {
            case JSON_KIND_NUMBER:
                text += dump_number(node->valuedouble);
                break;
            case JSON_KIND_UINT64:
                text += "u" + std::to_string(node->valueulonglong);
                break;
            case JSON_KIND_STRING:
                text += "'" + std::string(node->valuestring) + "'";
                break;
            case JSON_KIND_ARRAY:
                text += "[" + dump(node->child) + "]";
                break;
            case JSON_KIND_OBJECT:
                text += "{" + dump(node->child) + "}";
                break;
            default:
                text += std::to_string(node->type);
        }
        text += ";";
    }
    return text;
}

class PlainParser {
  public:
    PlainParser(const std::string &text, bool uint64) : text_(text.c_str()), uint64_(uint64) {}

    // The dump of the first value; empty on failure, with at() on the offending byte.
    std::string parse() { return value() ? result_ : ""; }
    std::ptrdiff_t at() const { return at_; }

  private:
    void skip() {
        while (text_[at_] >= 1 && text_[at_] <= 32) {
            ++at_;
        }
    }

    bool value() {
        skip();
        const char byte = text_[at_];
        bool passed = false;
        if (literal("null", "2") || literal("false", "0") || literal("true", "1")) {
            passed = true;
        } else if (byte == '"') {
            std::string text;
            passed = string(text);
            result_ += "'" + std::string(text.c_str()) + "'";
        } else if (byte == '-' || (byte >= '0' && byte <= '9')) {
            passed = uint64_ ? unsigned_number() : number();
        } else if (byte == '[' || byte == '{') {
            passed = container(byte == '{', byte == '{' ? '}' : ']');
        }
        result_ += ";";
        return passed;
    }

    bool literal(const char *word, const char *code) {
        if (std::strncmp(text_ + at_, word, std::strlen(word)) != 0) {
            return false;
        }
        at_ += static_cast<std::ptrdiff_t>(std::strlen(word));
        result_ += code;
        return true;
    }

    bool container(bool named, char close) {
        result_ += text_[at_++];
        skip();
        if (text_[at_] != close) {
            do {
                if (!element(named)) {
                    return false;
                }
                skip();
            } while (text_[at_] == ',' && ++at_);
            if (text_[at_] != close) {
                return false;
            }
        }
        result_ += text_[at_++];
        return true;
    }

    bool element(bool named) {
        skip();
        if (named) {
            std::string name;
            if (text_[at_] != '"' || !string(name)) {
                return false;
            }
            result_ += "<" + std::string(name.c_str()) + ">";
            skip();
            if (text_[at_] != ':') {
                return false;
            }
            ++at_;
        }
        return value();
    }

    // On failure stays behind the opening quote when there is no closing one, else at the bad
    // escape.
    bool string(std::string &out) {
        std::ptrdiff_t end = ++at_;
        while (text_[end] != '"') {
            if (text_[end] == '\0' || (text_[end] == '\\' && text_[++end] == '\0')) {
                return false;
            }
            ++end;
        }
        while (at_ < end) {
            if (text_[at_] != '\\') {
                out += text_[at_++];
            } else if (std::strchr("bfnrt\"\\/", text_[at_ + 1])) {
                out += unescaped(text_[at_ + 1]);
                at_ += 2;
            } else if (!code_point(out)) {
                return false;
            }
        }
        ++at_;
        return true;
    }

    // The number behind "\u" there; -1 without four hexadecimal digits.
    long code_unit(std::ptrdiff_t at) const {
        if (text_[at] != '\\' || text_[at + 1] != 'u') {
            return -1;
        }
        for (int i = 2; i < 6; ++i) {
            if (std::isxdigit(static_cast<unsigned char>(text_[at + i])) == 0) {
                return -1;
            }
        }
        return std::strtol(std::string(text_ + at + 2, 4).c_str(), nullptr, 16);
    }

    // One escape, or the two of a surrogate pair, as UTF-8. A zero ends the text for its readers.
    bool code_point(std::string &out) {
        long code = code_unit(at_);
        if (code < 0 || (code >= 0xDC00 && code <= 0xDFFF)) {
            return false;
        }
        const bool pair = code >= 0xD800 && code < 0xDC00;
        if (pair) {
            const long low = code_unit(at_ + 6);
            if (low < 0xDC00 || low > 0xDFFF) {
                return false;
            }
            code = 0x10000 + (code - 0xD800) * 0x400 + (low - 0xDC00);
        }
        at_ += pair ? 12 : 6;
        const int tail = code < 0x80 ? 0 : code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
        constexpr int kLead[] = {0, 0xC0, 0xE0, 0xF0};
        out += static_cast<char>(kLead[tail] | code >> (6 * tail));
        for (int i = tail - 1; i >= 0; --i) {
            out += static_cast<char>(0x80 | ((code >> (6 * i)) & 0x3F));
        }
        return true;
    }

    static char unescaped(char letter) {
        constexpr const char *kLetters = "bfnrt";
        const char *const found = std::strchr(kLetters, letter);
        return found ? "\b\f\n\r\t"[found - kLetters] : letter;
    }

    bool digits(std::string &token) {
        const std::size_t before = token.size();
        while (text_[at_] >= '0' && text_[at_] <= '9') {
            token += text_[at_++];
        }
        return token.size() > before;
    }

    bool number() {
        const std::ptrdiff_t start = at_;
        std::string token;
        if (text_[at_] == '-') {
            token += text_[at_++];
        }
        if (!digits(token)) {
            at_ = start;
            return false;
        }
        optional_part(token, ".", "");
        optional_part(token, "eE", "+-");
        result_ += dump_number(std::strtod(token.c_str(), nullptr));
        return true;
    }

    void optional_part(std::string &token, const char *lead, const char *signs) {
        const std::ptrdiff_t start = at_;
        const std::string before = token;
        if (text_[at_] == '\0' || !std::strchr(lead, text_[at_])) {
            return;
        }
        token += text_[at_++];
        if (text_[at_] != '\0' && std::strchr(signs, text_[at_])) {
            token += text_[at_++];
        }
        if (!digits(token)) {
            token = before;
            at_ = start;
        }
    }

    bool unsigned_number() {
        unsigned long long value = 0;
        if (text_[at_] == '0') {
            ++at_;
        }
        if (text_[at_] >= '1' && text_[at_] <= '9') {
            while (text_[at_] >= '0' && text_[at_] <= '9') {
                value = value * 10 + static_cast<unsigned>(text_[at_++] - '0');
            }
        }
        result_ += "u" + std::to_string(value);
        return true;
    }

    const char *text_;
    bool uint64_;
    std::ptrdiff_t at_ = 0;
    std::string result_;
};
