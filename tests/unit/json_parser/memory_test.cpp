// Every allocation of every function failing in turn: nothing leaks, nothing is half done.
#include <cstdlib>
#include <cstring>
#include <functional>

#include "json_test.h"

namespace {

const char *const kText = R"({"a":[1,-2.5,"x\n",{"b":true}],"c":null,"d":{"e":[]}})";

OwnedJson small_object() { return parsed(R"({"first":[1,"two"]})"); }

// Runs an action with each of its allocations failing once, and returns how many it makes. The
// action tells whether it had the effect it has with memory to spare.
std::size_t fail_each(const std::function<bool(JsonNode *)> &action) {
    for (std::size_t failing = 1;; ++failing) {
        OwnedJson target = small_object();
        const MemoryWatch watch(failing);
        const bool complete = action(target.get());
        const bool failed = memory_failed() != 0;
        memory_stop();
        EXPECT_NE(complete, failed) << "allocation " << failing;
        if (!failed) {
            return failing - 1;
        }
        EXPECT_EQ(memory_live(), 0u) << "allocation " << failing;
        EXPECT_EQ(plain(target), plain(small_object())) << "allocation " << failing;
    }
}

// For functions that return a document: complete when there is one.
std::size_t fail_each_of(const std::function<JsonNode *()> &create) {
    return fail_each([&](JsonNode *) { return OwnedJson(create()) != nullptr; });
}

TEST(Memory, ParsesOrReturnsNull) {
    EXPECT_GT(fail_each_of([] { return parseJsonText(kText); }), 20u);
    EXPECT_GT(fail_each_of([] { return parseJsonTextLongLongUint(R"({"a":[1,"x",{"b":2}]})"); }),
              10u);
}

TEST(Memory, PointsIntoTheTextWhenItFails) {
    for (std::size_t failing = 1; failing <= 20; ++failing) {
        const MemoryWatch watch(failing);
        ASSERT_EQ(parseJsonText(kText), nullptr);
        const std::ptrdiff_t offset = cJSON_GetErrorPtr() - kText;
        EXPECT_TRUE(offset >= 0 && offset <= static_cast<std::ptrdiff_t>(strlen(kText)));
    }
}

TEST(Memory, FailsToParseBadTextsWithoutLeaks) {
    for (std::size_t failing = 1; failing <= 20; ++failing) {
        for (const char *bad : {R"([1,"x",{"b":2,}])", R"([1,"x",{"b":2.]])", R"(["x)"}) {
            const MemoryWatch watch(failing);
            EXPECT_EQ(parseJsonText(bad), nullptr);
            EXPECT_EQ(parseJsonTextLongLongUint(bad), nullptr);
            EXPECT_EQ(memory_live(), 0u);
        }
    }
}

TEST(Memory, CreatesOrReturnsNull) {
    const int ints[] = {1, 2};
    const double doubles[] = {1.5, 2.5};
    const char *texts[] = {"a", "b"};
    EXPECT_EQ(fail_each_of(createJsonObject), 1u);
    EXPECT_EQ(fail_each_of(createJsonArray), 1u);
    EXPECT_EQ(fail_each_of([&] { return createJsonIntArray(ints, 2); }), 3u);
    EXPECT_EQ(fail_each_of([&] { return createJsonDoubleArray(doubles, 2); }), 3u);
    EXPECT_EQ(fail_each_of([&] { return createJsonStringArray(texts, 2); }), 5u);
}

TEST(Memory, DuplicatesOrReturnsNull) {
    const OwnedJson document = parsed(kText);
    EXPECT_GT(fail_each_of([&] { return duplicateJson(document.get(), 1); }), 15u);
    EXPECT_EQ(fail_each_of([&] { return duplicateJson(document.get(), 0); }), 1u);
}

TEST(Memory, AddsAllOrNothing) {
    const std::function<void(JsonNode *)> adders[] = {
        [](JsonNode *object) { addJsonStringToObject(object, "k", "text"); },
        [](JsonNode *object) { addJsonIntToObject(object, "k", 1); },
        [](JsonNode *object) { addJsonUlongToObject(object, "k", 1); },
        [](JsonNode *object) { addJsonBoolToObject(object, "k", 1); },
        [](JsonNode *object) { addJsonDoubleToObject(object, "k", 1); },
        [](JsonNode *object) { addJsonLongLongUintToObject(object, "k", 1); },
        [](JsonNode *object) {
            const OwnedJson source = parsed(R"({"k":"text"})");
            copyJsonStringValueForKey(source.get(), object, "k");
        },
    };
    for (const auto &add : adders) {
        EXPECT_GE(fail_each([&](JsonNode *object) {
                      add(object);
                      return getJsonArraySize(object) == 2;
                  }),
                  2u);
    }
}

TEST(Memory, LeavesTheItemToTheCallerWhenItsNameCannotBeCopied) {
    OwnedJson object = small_object();
    OwnedJson item = parsed("[1]");
    item->string = strdup("old");
    {
        const MemoryWatch watch(1);
        addJsonItemToObject(object.get(), "new", item.get());
    }
    EXPECT_EQ(getJsonArraySize(object.get()), 1);
    EXPECT_STREQ(item->string, "old");
    EXPECT_EQ(item->prev, nullptr);
}

TEST(Memory, FreesTheOldNameOfANodeThatIsAddedAgain) {
    const MemoryWatch watch;
    const OwnedJson object(createJsonObject());
    JsonNode *const node = createJsonArray();
    addJsonItemToObject(object.get(), "old", node);
    object->child = nullptr;
    addJsonItemToObject(object.get(), "new", node);
    EXPECT_EQ(memory_live(), 3u);  // two nodes and a name
}

TEST(Memory, PrintsOrReturnsNull) {
    const OwnedJson document = parsed(R"({"a":[1,2.5,"x"],"b":")" + std::string(1000, 'y') + "\"}");
    for (char *(*print)(const JsonNode *) noexcept : {printJson, printJsonUnformatted}) {
        const auto prints = [&](JsonNode *) {
            char *const text = print(document.get());
            EXPECT_EQ(memory_live(), text != nullptr ? 1u : 0u);
            std::free(text);
            return text != nullptr;
        };
        EXPECT_GE(fail_each(prints), 3u);
    }
}

TEST(Memory, LeavesOutElementsOfAStringArray) {
    const OwnedJson source = parsed(R"([1,{"k":"v"},"x"])");
    for (std::size_t failing = 1;; ++failing) {
        OwnedJson object = small_object();
        const MemoryWatch watch(failing);
        EXPECT_EQ(addJsonStringArrayToObject(object.get(), "l", source.get()), nullptr);
        const int size = getJsonArraySize(getJsonObjectForKey(object.get(), "l"));
        if (memory_failed() == 0) {
            EXPECT_EQ(size, 3);
            break;
        }
        const bool added = getJsonArraySize(object.get()) == 2;
        EXPECT_EQ(added, failing > 2) << failing;
        EXPECT_EQ(size, added ? 2 : 0) << failing;
        // The array with its name, and two strings with their texts.
        EXPECT_EQ(memory_live(), added ? 6u : 0u) << failing;
    }
}

TEST(Memory, ReturnsNoSpareArrayWithoutMemory) {
    for (const std::size_t failing : {1u, 2u, 3u}) {
        OwnedJson object = small_object();
        const MemoryWatch watch(failing);
        const OwnedJson spare(addJsonStringArrayToObject(object.get(), "l", nullptr));
        EXPECT_EQ(spare != nullptr, failing != 3) << failing;
        EXPECT_EQ(getJsonArraySize(object.get()), failing == 3 ? 2 : 1) << failing;
    }
}

TEST(Memory, FreesADocumentCompletely) {
    const MemoryWatch watch;
    for (JsonNode *(*parse)(const char *) noexcept : {parseJsonText, parseJsonTextLongLongUint}) {
        JsonNode *document = parse(R"({"a":[1,25,"x\n",{"b":true}],"c":null,"d":{"e":[]}} rest)");
        EXPECT_EQ(memory_live(), 10u + 5u + 1u);  // nodes, names, texts
        deleteJson(document);
        EXPECT_EQ(memory_live(), 0u);
    }
}

}  // namespace
