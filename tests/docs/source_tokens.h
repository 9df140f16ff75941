// C++ source text as tokens, with what the tests over the documentation ask of it: calls and their
// arguments, and the function that a place stands in.
#pragma once

#include <string>
#include <vector>

struct Token {
    enum Kind { kName, kNumber, kText, kSign };
    Kind kind;
    std::string text;  // of a kText what stands between the quotes, as it is written
};
using Tokens = std::vector<Token>;

// Comments and preprocessor lines are left out.
Tokens tokens_of(const std::string &source);

bool is_sign(const Token &token, char sign);

// The position of the bracket that ends what the bracket at `open` begins.
size_t closing(const Tokens &tokens, size_t open);

// The pieces between `open` and its closing bracket, as separated by commas.
std::vector<Tokens> pieces(const Tokens &tokens, size_t open);

struct Function {
    std::string name;
    std::vector<std::string> parameters;
    size_t begin;  // of the body
    size_t end;
};

// Every function that is defined in there.
std::vector<Function> functions_of(const Tokens &tokens);
