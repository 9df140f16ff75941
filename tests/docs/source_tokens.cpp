#include "source_tokens.h"

#include <cctype>
#include <set>

namespace {

bool in_name(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_'; }

// The end of the quoted text that begins at `at`.
size_t end_of_quoted(const std::string &source, size_t at) {
    const char quote = source[at];
    for (++at; at < source.size() && source[at] != quote; ++at)
        at += source[at] == '\\' ? 1 : 0;
    return at;
}

size_t end_of_line(const std::string &source, size_t at) {
    do {
        at = std::min(source.find('\n', at + 1), source.size());
    } while (at < source.size() && source[at - 1] == '\\');
    return at;
}

// Behind the comment or preprocessor line that begins at `at`; `at` itself when none does.
size_t skipped(const std::string &source, size_t at) {
    if (source[at] == '#' || source.compare(at, 2, "//") == 0)
        return end_of_line(source, at);
    if (source.compare(at, 2, "/*") == 0)
        return source.find("*/", at) + 2;
    return at;
}

bool is_function_body(const Tokens &tokens, size_t brace, size_t &parameters) {
    static const std::set<std::string> statements = {"if", "for", "while", "switch", "catch"};
    size_t at = brace;
    while (at > 0 && (tokens[at - 1].text == "noexcept" || tokens[at - 1].text == "const"))
        --at;
    if (at == 0 || !is_sign(tokens[at - 1], ')'))
        return false;
    int depth = 0;
    for (--at; at > 0; --at) {
        depth += is_sign(tokens[at], ')') ? 1 : is_sign(tokens[at], '(') ? -1 : 0;
        if (depth == 0)
            break;
    }
    parameters = at;
    return at > 0 && tokens[at - 1].kind == Token::kName &&
           statements.count(tokens[at - 1].text) == 0;
}

}  // namespace

Tokens tokens_of(const std::string &source) {
    Tokens tokens;
    for (size_t at = 0; at < source.size();) {
        const char c = source[at];
        size_t end = skipped(source, at);
        if (end != at) {
            at = end;
            continue;
        }
        if (source.compare(at, 3, "R\"(") == 0) {
            end = source.find(")\"", at);
            tokens.push_back({Token::kText, source.substr(at + 3, end - at - 3)});
            at = end + 2;
            continue;
        }
        if (c == '"' || c == '\'') {
            end = end_of_quoted(source, at);
            tokens.push_back({Token::kText, source.substr(at + 1, end - at - 1)});
            at = end + 1;
            continue;
        }
        for (end = at; end < source.size() && in_name(source[end]);)
            ++end;
        if (end != at) {
            const bool number = std::isdigit(static_cast<unsigned char>(c)) != 0;
            tokens.push_back({number ? Token::kNumber : Token::kName, source.substr(at, end - at)});
            at = end;
            continue;
        }
        if (std::isspace(static_cast<unsigned char>(c)) == 0)
            tokens.push_back({Token::kSign, std::string(1, c)});
        ++at;
    }
    return tokens;
}

bool is_sign(const Token &token, char sign) {
    return token.kind == Token::kSign && token.text[0] == sign;
}

size_t closing(const Tokens &tokens, size_t open) {
    int depth = 0;
    for (size_t at = open; at < tokens.size(); ++at) {
        if (tokens[at].kind != Token::kSign)
            continue;
        const char sign = tokens[at].text[0];
        depth += sign == '(' || sign == '{' || sign == '[' ? 1 : 0;
        depth -= sign == ')' || sign == '}' || sign == ']' ? 1 : 0;
        if (depth == 0)
            return at;
    }
    return tokens.size();
}

std::vector<Tokens> pieces(const Tokens &tokens, size_t open) {
    std::vector<Tokens> found;
    const size_t end = closing(tokens, open);
    Tokens piece;
    for (size_t at = open + 1; at < end; ++at) {
        if (is_sign(tokens[at], ',')) {
            found.push_back(piece);
            piece.clear();
            continue;
        }
        const bool opens =
            is_sign(tokens[at], '(') || is_sign(tokens[at], '{') || is_sign(tokens[at], '[');
        const size_t last = opens ? closing(tokens, at) : at;
        for (; at < last; ++at)
            piece.push_back(tokens[at]);
        piece.push_back(tokens[at]);
    }
    if (!piece.empty())
        found.push_back(piece);
    return found;
}

std::vector<Function> functions_of(const Tokens &tokens) {
    std::vector<Function> found;
    for (size_t at = 0; at < tokens.size(); ++at) {
        size_t parameters = 0;
        if (!is_sign(tokens[at], '{') || !is_function_body(tokens, at, parameters))
            continue;
        Function function{tokens[parameters - 1].text, {}, at, closing(tokens, at)};
        for (const Tokens &piece : pieces(tokens, parameters)) {
            std::string name;
            for (const Token &token : piece)
                name = token.kind == Token::kName ? token.text : name;
            function.parameters.push_back(name);
        }
        found.push_back(function);
    }
    return found;
}
