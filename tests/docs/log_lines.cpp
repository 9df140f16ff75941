#include "log_lines.h"

#include <algorithm>

#include "source_tokens.h"

namespace {

struct File {
    std::string name;
    Tokens tokens;
    std::vector<Function> functions;
};

struct Struct {
    std::vector<std::string> fields;
    std::vector<std::vector<Tokens>> rows;  // of the file's constants of this type
};

// A call's arguments where they were written.
struct Call {
    const File *file;
    const Function *function;
    std::vector<Tokens> arguments;
};

bool is_call(const Tokens &tokens, size_t at, const std::string &name) {
    return tokens[at].kind == Token::kName && tokens[at].text == name && at + 1 < tokens.size() &&
           is_sign(tokens[at + 1], '(');
}

const Function *enclosing(const File &file, size_t at) {
    const Function *found = nullptr;
    for (const Function &function : file.functions)
        if (function.begin < at && at < function.end)
            found = &function;
    return found;
}

std::string joined_texts(const Tokens &argument) {
    std::string text;
    for (const Token &token : argument)
        text += token.kind == Token::kText ? token.text : "";
    return text;
}

bool all_text(const Tokens &argument) {
    return !argument.empty() && std::all_of(argument.begin(), argument.end(),
                                            [](const Token &t) { return t.kind == Token::kText; });
}

bool is_function_name(const std::string &text) {
    return !text.empty() && text.find_first_not_of(
                                "abcdefghijklmnopqrstuvwxyz"
                                "ABCDEFGHIJKLMNOPQRSTUVWXYZ_") == std::string::npos;
}

class Collector {
  public:
    explicit Collector(const Sources &sources) {
        for (const auto &[name, source] : sources) {
            files_.push_back({name, tokens_of(source), {}});
            files_.back().functions = functions_of(files_.back().tokens);
        }
    }

    std::set<LogLine> lines() {
        for (const char *name : {"cloud_log", "printf"})
            for (const Call &call : calls_of(name))
                if (call.function != nullptr)  // else it is a declaration
                    expand(call, call.file->name);
        return lines_;
    }

  private:
    std::vector<Call> calls_of(const std::string &name) const {
        std::vector<Call> found;
        for (const File &file : files_)
            for (size_t at = 0; at < file.tokens.size(); ++at)
                if (is_call(file.tokens, at, name)) {
                    const Function *function = enclosing(file, at);
                    found.push_back({&file, function, pieces(file.tokens, at + 1)});
                    for (Tokens &argument : found.back().arguments)
                        name_functions(argument, file, function);
                }
        return found;
    }

    // __func__ and the names of text constants become the function names they stand for.
    void name_functions(Tokens &argument, const File &file, const Function *function) const {
        if (argument.size() != 1 || argument[0].kind != Token::kName)
            return;
        std::string name = function != nullptr && argument[0].text == "__func__"
                               ? function->name
                               : text_constant(file, argument[0].text);
        if (is_function_name(name))
            argument[0] = {Token::kText, name};
    }

    // The value of `constexpr const char *NAME = ...`, of this file or else of a header.
    std::string text_constant(const File &file, const std::string &name) const {
        std::string value = text_constant_in(file, name);
        for (const File &header : files_)
            if (value.empty() && header.name.back() == 'h')
                value = text_constant_in(header, name);
        return value;
    }

    std::string text_constant_in(const File &file, const std::string &name) const {
        const Tokens &tokens = file.tokens;
        for (size_t at = 1; at + 2 < tokens.size(); ++at)
            if (tokens[at].text == name && is_sign(tokens[at - 1], '*') &&
                is_sign(tokens[at + 1], '='))
                return tokens[at + 2].kind == Token::kText
                           ? tokens[at + 2].text
                           : text_constant(file, tokens[at + 2].text);
        return "";
    }

    void expand(const Call &call, const std::string &where) {
        if (!expand_over_rows(call, where) && !expand_over_callers(call, where))
            keep(call, where);
    }

    // An argument `row.field` stands for that field of every row of the file's table.
    bool expand_over_rows(const Call &call, const std::string &where) {
        for (const Tokens &argument : call.arguments) {
            const Struct *table = table_of(*call.file, argument);
            if (table == nullptr)
                continue;
            for (const std::vector<Tokens> &row : table->rows) {
                Call one = call;
                for (Tokens &part : one.arguments)
                    if (const size_t field = field_of(*table, part); field < row.size())
                        part = row[field];
                keep(one, where);
            }
            return true;
        }
        return false;
    }

    static size_t field_of(const Struct &table, const Tokens &argument) {
        if (argument.size() != 3 || !is_sign(argument[1], '.'))
            return table.fields.size();
        const auto found = std::find(table.fields.begin(), table.fields.end(), argument[2].text);
        return static_cast<size_t>(found - table.fields.begin());
    }

    const Struct *table_of(const File &file, const Tokens &argument) {
        for (const Struct &one : structs_of(file))
            if (!one.rows.empty() && field_of(one, argument) < one.fields.size())
                return &one;
        return nullptr;
    }

    const std::vector<Struct> &structs_of(const File &file) {
        const auto [found, is_new] = structs_.try_emplace(file.name);
        const Tokens &tokens = file.tokens;
        for (size_t at = 0; is_new && at + 2 < tokens.size(); ++at)
            if (tokens[at].text == "struct" && is_sign(tokens[at + 2], '{'))
                found->second.push_back(
                    {fields_of(tokens, at + 2), rows_of(tokens, tokens[at + 1].text)});
        return found->second;
    }

    static std::vector<std::string> fields_of(const Tokens &tokens, size_t open) {
        std::vector<std::string> fields;
        for (size_t at = open; at < closing(tokens, open); ++at)
            if (is_sign(tokens[at], ';'))
                fields.push_back(tokens[at - 1].text);
        return fields;
    }

    // `constexpr TYPE name = {...}` and `constexpr TYPE name[] = {{...}, ...}`.
    static std::vector<std::vector<Tokens>> rows_of(const Tokens &tokens, const std::string &type) {
        std::vector<std::vector<Tokens>> rows;
        for (size_t at = 1; at + 6 < tokens.size(); ++at) {
            if (tokens[at].text != type || tokens[at - 1].text != "constexpr")
                continue;
            const bool many = is_sign(tokens[at + 2], '[');
            const size_t open = at + (many ? 5 : 3);
            if (tokens[at + 1].kind != Token::kName || !is_sign(tokens[open], '{'))
                continue;
            if (!many)
                rows.push_back(pieces(tokens, open));
            else
                for (const Tokens &row : pieces(tokens, open))
                    rows.push_back(pieces(row, 0));
        }
        return rows;
    }

    // A parameter that some caller gives a number or a function name stands for all callers'.
    bool expand_over_callers(const Call &call, const std::string &where) {
        if (call.function == nullptr)
            return false;
        const std::vector<Call> callers = calls_of(call.function->name);
        const auto tells = [&](const Call &caller) {
            return caller.function != nullptr && takes_from(call, caller);
        };
        if (std::none_of(callers.begin(), callers.end(), tells))
            return false;
        for (const Call &caller : callers) {
            if (!tells(caller))
                continue;
            Call one = call;
            one.function = caller.function;
            for (Tokens &argument : one.arguments)
                if (const size_t p = parameter(call, argument); p < caller.arguments.size())
                    argument = caller.arguments[p];
            expand({caller.file, caller.function, one.arguments}, where);
        }
        return true;
    }

    static size_t parameter(const Call &call, const Tokens &argument) {
        const std::vector<std::string> &names = call.function->parameters;
        if (argument.size() != 1)
            return names.size();
        const auto found = std::find(names.begin(), names.end(), argument[0].text);
        return found == names.end() ? SIZE_MAX : static_cast<size_t>(found - names.begin());
    }

    static bool takes_from(const Call &call, const Call &caller) {
        for (const Tokens &argument : call.arguments) {
            const size_t p = parameter(call, argument);
            if (p < call.function->parameters.size() && p < caller.arguments.size() &&
                !site_of(caller.arguments[p]).empty())
                return true;
        }
        return false;
    }

    // A number, or the field of a kind's numbers.
    static std::string site_of(const Tokens &argument) {
        if (argument.size() == 1 && argument[0].kind == Token::kNumber)
            return argument[0].text;
        if (argument.size() == 5 && argument[2].text == "sites") {
            std::string field = argument[4].text;
            std::replace(field.begin(), field.end(), '_', ' ');
            return field;
        }
        return "";
    }

    void keep(const Call &call, const std::string &where) {
        LogLine line{where, "", "", joined_texts(call.arguments.at(0))};
        for (size_t i = 1; i < call.arguments.size(); ++i) {
            const Tokens &argument = call.arguments[i];
            if (line.speaker.empty() && all_text(argument) &&
                is_function_name(joined_texts(argument)))
                line.speaker = joined_texts(argument);
            if (line.number.empty())
                line.number = site_of(argument);
        }
        if (!line.number.empty() && line.number.find_first_not_of("0123456789") == 0)
            line.where = "every kind";
        lines_.insert(line);
    }

    std::vector<File> files_;
    std::map<std::string, std::vector<Struct>> structs_;
    std::set<LogLine> lines_;
};

}  // namespace

std::set<LogLine> log_lines(const Sources &sources) { return Collector(sources).lines(); }
