// What the JSON tests share: owned documents, printed texts and an allocator that fails on demand.
#ifndef CLOUDAGENT_TESTS_JSON_TEST_H
#define CLOUDAGENT_TESTS_JSON_TEST_H

#include <cjson/cJSON.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "json_parser/json_parser.h"
#include "json_parser/owned_json.h"

inline OwnedJson parsed(const std::string &text) { return OwnedJson(parseJsonText(text.c_str())); }

inline OwnedJson parsed_uint64(const std::string &text) {
    return OwnedJson(parseJsonTextLongLongUint(text.c_str()));
}

// Where the parse of a text with numbers as doubles fails.
inline std::ptrdiff_t error_offset(const std::string &text) {
    EXPECT_EQ(parseJsonText(text.c_str()), nullptr) << text;
    return cJSON_GetErrorPtr() - text.c_str();
}

// Frees through cJSON, which is free() unless a test counts its blocks.
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

// While it lives, cJSON's allocator counts its blocks and fails the one allocation it is told to.
class CountingAllocator {
  public:
    static constexpr int kNever = -1;

    explicit CountingAllocator(int failing = kNever) {
        live = made = 0;
        fail_at = failing;
        cJSON_Hooks hooks{allocate, release};
        cJSON_InitHooks(&hooks);
    }
    ~CountingAllocator() { cJSON_InitHooks(nullptr); }
    CountingAllocator(const CountingAllocator &) = delete;
    CountingAllocator &operator=(const CountingAllocator &) = delete;

    static bool failed() { return fail_at != kNever && made > fail_at; }

    static inline int live = 0;  // blocks allocated and not freed
    static inline int made = 0;  // allocations asked for

  private:
    static void *allocate(std::size_t size) {
        if (made++ == fail_at) {
            return nullptr;
        }
        ++live;
        return std::malloc(size);
    }

    static void release(void *block) {
        live -= block ? 1 : 0;
        std::free(block);
    }

    static inline int fail_at = kNever;
};

#endif
