#include "virtual_device/scenario_fields.h"

#include <stdexcept>

namespace world {

using nlohmann::json;

void complain(const std::string &where, const std::string &what) {
    throw std::runtime_error(where + ": " + what);
}

std::string one_of(const std::set<std::string> &names) {
    std::string text;
    size_t left = names.size();
    for (const std::string &name : names) {
        --left;
        text += "\"" + name + "\"" + (left > 1 ? ", " : left == 1 ? " or " : "");
    }
    return text;
}

std::string text_value(const json &value, const std::string &where) {
    if (value.is_string())
        return value.get<std::string>();
    std::string text;
    if (value.is_array()) {
        for (const json &piece : value)
            text += text_value(piece, where);
        return text;
    }
    if (!value.is_object())
        complain(where, "must be a text, {\"text\": ..., \"times\": N}, or a list of these");
    Fields piece(value, where);
    constexpr long kMost = 64L << 20;
    const std::string unit = piece.text("text");
    for (long left = piece.number("times", 1, 0, kMost); left > 0; --left)
        text += unit;
    piece.finish();
    return text;
}

Fields::Fields(const json &object, std::string where) : object_(object), where_(std::move(where)) {
    if (!object.is_object())
        complain(where_, "must be an object");
}

const json *Fields::take(const std::string &name) {
    known_.insert(name);
    const auto found = object_.find(name);
    return found == object_.end() ? nullptr : &*found;
}

std::string Fields::text(const std::string &name, const std::string &otherwise) {
    const json *value = take(name);
    if (value == nullptr)
        return otherwise;
    if (!value->is_string())
        complain(where_ + ": " + name, "must be a text");
    return value->get<std::string>();
}

bool Fields::flag(const std::string &name, bool otherwise) {
    const json *value = take(name);
    if (value == nullptr)
        return otherwise;
    if (!value->is_boolean())
        complain(where_ + ": " + name, "must be true or false");
    return value->get<bool>();
}

long Fields::number(const std::string &name, long otherwise, long least, long most) {
    const json *value = take(name);
    if (value == nullptr)
        return otherwise;
    if (!value->is_number_integer() || value->get<long>() < least || value->get<long>() > most)
        complain(where_ + ": " + name, "must be a whole number from " + std::to_string(least) +
                                           " to " + std::to_string(most));
    return value->get<long>();
}

void Fields::with(const std::string &name,
                  const std::function<void(const json &, const std::string &)> &use) {
    if (const json *value = take(name))
        use(*value, where_ + ": " + name);
}

void Fields::with_object(const std::string &name, const std::function<void(Fields &)> &use) {
    with(name, [&](const json &value, const std::string &place) {
        Fields inner(value, place);
        use(inner);
    });
}

std::set<std::string> Fields::choices(const std::string &name,
                                      const std::set<std::string> &allowed) {
    std::set<std::string> chosen;
    with(name, [&](const json &value, const std::string &place) {
        if (!value.is_array())
            complain(place, "must be a list of " + one_of(allowed));
        for (const json &entry : value) {
            if (!entry.is_string() || allowed.count(entry.get<std::string>()) == 0)
                complain(place, entry.dump() + " is not " + one_of(allowed));
            chosen.insert(entry.get<std::string>());
        }
    });
    return chosen;
}

void Fields::finish() const {
    for (const auto &[name, value] : object_.items())
        if (known_.count(name) == 0)
            complain(where_, "unknown field \"" + name + "\"; allowed are " + one_of(known_));
}

}  // namespace world
