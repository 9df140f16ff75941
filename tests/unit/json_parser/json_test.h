// Owned documents and printed texts for the JSON tests.
#pragma once

#include <cjson/cJSON.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <string>

#include "json_parser/json_parser.h"
#include "json_parser/owned_json.h"
#include "testing/failing_memory.h"

// Also where cJSON is a shared library, its allocations are the program's own, to be watched.
inline const bool kCjsonIsWatched = [] {
    cJSON_Hooks hooks{std::malloc, std::free};
    cJSON_InitHooks(&hooks);
    return true;
}();

using cloudagent::OwnedJson;

inline OwnedJson parsed(const std::string &text) { return OwnedJson(parseJsonText(text.c_str())); }

inline OwnedJson parsed_uint64(const std::string &text) {
    return OwnedJson(parseJsonTextLongLongUint(text.c_str()));
}

// Where the parse of a text with numbers as doubles fails.
inline std::ptrdiff_t error_offset(const std::string &text) {
    EXPECT_EQ(parseJsonText(text.c_str()), nullptr) << text;
    return cJSON_GetErrorPtr() - text.c_str();
}

inline std::string taken(char *text) {
    const std::string result = text ? text : "(null)";
    cJSON_free(text);
    return result;
}

inline std::string formatted(const JsonNode *node) { return taken(printJson(node)); }
inline std::string formatted(const OwnedJson &document) { return formatted(document.get()); }
inline std::string plain(const JsonNode *node) { return taken(printJsonUnformatted(node)); }
inline std::string plain(const OwnedJson &document) { return plain(document.get()); }

inline JsonNode *member(const OwnedJson &object, const char *key) {
    return getJsonObjectForKey(object.get(), key);
}
