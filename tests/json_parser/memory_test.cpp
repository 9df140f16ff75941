// Every allocation of every function failing in turn: nothing leaks, nothing is half done.
#include <cstring>
#include <functional>

#include "json_test.h"

namespace {

const char *const kText = R"({"a":[1,-2.5,"x\n",{"b":true}],"c":null,"d":{"e":[]}})";

// Runs an action with each of its allocations failing once, and returns how many it makes. `setup`
// makes what the action works on; the action tells whether it had the effect it has with memory to
// spare.
int fail_each(const std::function<OwnedJson()> &setup,
              const std::function<bool(JsonNode *)> &action) {
    for (int failing = 0;; ++failing) {
        OwnedJson target = setup();
        CountingAllocator allocator(failing);
        const bool complete = action(target.get());
        const bool failed = CountingAllocator::failed();
        EXPECT_NE(complete, failed) << "allocation " << failing;
        // What was added is freed with the target, so the count returns to that of the target's own
        // blocks.
        const int kept = CountingAllocator::live;
        const std::string text = plain(target);
        EXPECT_EQ(CountingAllocator::live, kept);
        if (failed) {
            EXPECT_EQ(text, plain(setup())) << "allocation " << failing;
            EXPECT_EQ(kept, 0) << "allocation " << failing;
        } else {
            return failing;
        }
    }
}

OwnedJson small_object() { return parsed(R"({"first":[1,"two"]})"); }

// For functions that return a document: complete when there is one.
int fail_each_of(const std::function<JsonNode *()> &create) {
    return fail_each(small_object, [&](JsonNode *) { return OwnedJson(create()) != nullptr; });
}

TEST(Memory, ParsesOrReturnsNull) {
    EXPECT_GT(fail_each_of([] { return parseJsonText(kText); }), 20);
    EXPECT_GT(fail_each_of([] { return parseJsonTextLongLongUint(R"({"a":[1,"x",{"b":2}]})"); }),
              10);
}

TEST(Memory, PointsIntoTheTextWhenItFails) {
    for (int failing = 0; failing < 20; ++failing) {
        const CountingAllocator allocator(failing);
        ASSERT_EQ(parseJsonText(kText), nullptr);
        const std::ptrdiff_t offset = cJSON_GetErrorPtr() - kText;
        EXPECT_TRUE(offset >= 0 && offset <= static_cast<std::ptrdiff_t>(strlen(kText)));
    }
}

TEST(Memory, FailsToParseBadTextsWithoutLeaks) {
    for (int failing = 0; failing < 20; ++failing) {
        for (const char *bad : {R"([1,"x",{"b":2,}])", R"([1,"x",{"b":2.]])", R"(["x)"}) {
            const CountingAllocator allocator(failing);
            EXPECT_EQ(parseJsonText(bad), nullptr);
            EXPECT_EQ(parseJsonTextLongLongUint(bad), nullptr);
            EXPECT_EQ(CountingAllocator::live, 0);
        }
    }
}

TEST(Memory, CreatesOrReturnsNull) {
    const int ints[] = {1, 2};
    const double doubles[] = {1.5, 2.5};
    const char *texts[] = {"a", "b"};
    EXPECT_EQ(fail_each_of(createJsonObject), 1);
    EXPECT_EQ(fail_each_of(createJsonArray), 1);
    EXPECT_EQ(fail_each_of([&] { return createJsonIntArray(ints, 2); }), 3);
    EXPECT_EQ(fail_each_of([&] { return createJsonDoubleArray(doubles, 2); }), 3);
    EXPECT_EQ(fail_each_of([&] { return createJsonStringArray(texts, 2); }), 5);
}

TEST(Memory, DuplicatesOrReturnsNull) {
    const OwnedJson document = parsed(kText);
    EXPECT_GT(fail_each_of([&] { return duplicateJson(document.get(), 1); }), 15);
    EXPECT_EQ(fail_each_of([&] { return duplicateJson(document.get(), 0); }), 1);
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
        const int count = fail_each(small_object, [&](JsonNode *object) {
            add(object);
            return getJsonArraySize(object) == 2;
        });
        EXPECT_GE(count, 2);
    }
}

TEST(Memory, LeavesTheItemToTheCallerWhenItsNameCannotBeCopied) {
    OwnedJson object = small_object();
    OwnedJson item = parsed("[1]");
    item->string = strdup("old");
    {
        const CountingAllocator allocator(0);
        addJsonItemToObject(object.get(), "new", item.get());
    }
    EXPECT_EQ(getJsonArraySize(object.get()), 1);
    EXPECT_STREQ(item->string, "old");
    EXPECT_EQ(item->prev, nullptr);
}

TEST(Memory, PrintsOrReturnsNull) {
    const OwnedJson document = parsed(R"({"a":[1,2.5,"x"],"b":")" + std::string(1000, 'y') + "\"}");
    for (char *(*print)(const JsonNode *) noexcept : {printJson, printJsonUnformatted}) {
        int failing = 0;
        for (;; ++failing) {
            const CountingAllocator allocator(failing);
            char *text = print(document.get());
            EXPECT_NE(text != nullptr, CountingAllocator::failed()) << failing;
            EXPECT_EQ(CountingAllocator::live, text ? 1 : 0) << failing;
            std::free(text);
            if (!CountingAllocator::failed()) {
                break;
            }
        }
        EXPECT_GE(failing, 3);
    }
}

TEST(Memory, LeavesOutElementsOfAStringArray) {
    const OwnedJson source = parsed(R"([1,{"k":"v"},"x"])");
    for (int failing = 0;; ++failing) {
        OwnedJson object = small_object();
        CountingAllocator allocator(failing);
        EXPECT_EQ(addJsonStringArrayToObject(object.get(), "l", source.get()), nullptr);
        const int size = getJsonArraySize(getJsonObjectForKey(object.get(), "l"));
        if (!CountingAllocator::failed()) {
            EXPECT_EQ(size, 3);
            break;
        }
        const bool added = getJsonArraySize(object.get()) == 2;
        EXPECT_EQ(added, failing > 1) << failing;
        EXPECT_EQ(size, added ? 2 : 0) << failing;
        // The array with its name, and two strings with their texts.
        EXPECT_EQ(CountingAllocator::live, added ? 6 : 0) << failing;
    }
}

TEST(Memory, ReturnsNoSpareArrayWithoutMemory) {
    for (const int failing : {0, 1, 2}) {
        OwnedJson object = small_object();
        CountingAllocator allocator(failing);
        const OwnedJson spare(addJsonStringArrayToObject(object.get(), "l", nullptr));
        EXPECT_EQ(spare != nullptr, failing != 2) << failing;
        EXPECT_EQ(getJsonArraySize(object.get()), failing == 2 ? 2 : 1) << failing;
    }
}

TEST(Memory, FreesADocumentCompletely) {
    const CountingAllocator allocator;
    for (JsonNode *(*parse)(const char *) noexcept : {parseJsonText, parseJsonTextLongLongUint}) {
        JsonNode *document = parse(R"({"a":[1,25,"x\n",{"b":true}],"c":null,"d":{"e":[]}} rest)");
        EXPECT_EQ(CountingAllocator::live, 10 + 5 + 1);  // nodes, names, texts
        deleteJson(document);
        EXPECT_EQ(CountingAllocator::live, 0);
    }
}

}  // namespace
