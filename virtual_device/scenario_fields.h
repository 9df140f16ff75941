/*
 * Checked access to a JSON object: each field is read by name and type, and finish() rejects fields
 * that were not read.
 */
#pragma once

#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <string>

namespace world {

class Fields {
  public:
    // `where` names the object in messages: a file, or a file and the path of fields to it.
    Fields(const nlohmann::json &object, std::string where);

    // Each returns `otherwise` when the field is missing.
    std::string text(const std::string &name, const std::string &otherwise = "");
    bool flag(const std::string &name, bool otherwise);
    long number(const std::string &name, long otherwise, long least, long most);
    // Calls `use` with the field's value and its place, when there is one.
    void with(const std::string &name,
              const std::function<void(const nlohmann::json &, const std::string &)> &use);
    void with_object(const std::string &name, const std::function<void(Fields &)> &use);
    // Texts of a list, each of them one of `allowed`.
    std::set<std::string> choices(const std::string &name, const std::set<std::string> &allowed);

    // Throws when a field was not read; the message lists the known ones.
    void finish() const;

    const nlohmann::json &object() const { return object_; }
    const std::string &where() const { return where_; }

  private:
    const nlohmann::json *take(const std::string &name);

    const nlohmann::json &object_;
    const std::string where_;
    std::set<std::string> known_;
};

// Throws std::runtime_error: "FILE: FIELD: what is wrong".
[[noreturn]] void complain(const std::string &where, const std::string &what);

// "a", "b" or "c"
std::string one_of(const std::set<std::string> &names);

// A text, {"text": "x", "times": 3}, or a list of such pieces.
std::string text_value(const nlohmann::json &value, const std::string &where);

}  // namespace world
