// The properties that every accessor of a state file has.
#include "accessors.h"

#include <set>

#include "deployment.h"
#include "state_test.h"
#include "testing/guarded.h"
#include "testing/open_watch.h"

namespace {

constexpr size_t kMost = 255;  // characters that a getter stores

// One call of each accessor, and how it closes its file.
struct Call : NamedRow {
    std::string path;
    std::function<void()> make;
    const char *closing;
};

std::vector<Call> all_calls() {
    static Guarded<kMost + 1> text;
    static uint32_t number = 0;
    std::vector<Call> calls;
    for (const NumberGetter &row : number_getters()) {
        calls.push_back({{row.name}, row.path, [row] { row.get(&number); }, "read "});
    }
    for (const TextGetter &row : text_getters()) {
        calls.push_back({{row.name}, row.path, [row] { row.get(text.data()); }, "read "});
    }
    for (const TextSetter &row : text_setters()) {
        calls.push_back({{row.name}, row.path, [row] { row.set("word"); }, "written "});
    }
    for (const NumberSetter &row : number_setters()) {
        calls.push_back({{row.name}, row.path, [row] { row.set(2); }, "written "});
    }
    return calls;
}

class Accessors : public StateTest, public testing::WithParamInterface<Call> {};

TEST_P(Accessors, OpenTheirFileOnce) {
    world::write_file(GetParam().path, "1");
    const OpenWatch opened(folder_of(GetParam().path));
    GetParam().make();
    const std::string name = name_of(GetParam().path);
    EXPECT_THAT(opened.seen(), testing::ElementsAre("open " + name, GetParam().closing + name));
}

INSTANTIATE_TEST_SUITE_P(StateFiles, Accessors, testing::ValuesIn(all_calls()), RowName());

class NumberGetters : public StateTest, public testing::WithParamInterface<NumberGetter> {
  protected:
    // Calls the getter on a variable that holds `value` and checks its result.
    static uint32_t get(uint32_t value) {
        const uint32_t result = GetParam().get(&value);
        EXPECT_EQ(result, GetParam().returns_value ? value : 0);
        return value;
    }
};

TEST_P(NumberGetters, ReadsOneNumber) {
    for (const Reading &reading : GetParam().readings) {
        world::write_file(GetParam().path, reading.content);
        EXPECT_EQ(get(1234567), reading.value) << reading.content;
        EXPECT_EQ(world::read_file(GetParam().path), reading.content) << "not rewritten";
    }
    EXPECT_TRUE(only_file_is(GetParam().path));
}

TEST_P(NumberGetters, HasADefaultForAMissingFile) {
    EXPECT_EQ(get(1234567), GetParam().missing);
    if (GetParam().creates_file) {
        EXPECT_TRUE(only_file_is(GetParam().path));
        EXPECT_EQ(world::read_file(GetParam().path), "1");
        EXPECT_EQ(get(0), 1u) << "read back";
    } else {
        EXPECT_TRUE(no_files());
    }
}

TEST_P(NumberGetters, HasTheSameDefaultForAMissingFolder) {
    remove_state_folders();
    EXPECT_EQ(get(1234567), GetParam().missing);
    EXPECT_FALSE(state_folders_exist());
}

TEST_P(NumberGetters, KeepsTheCallersValueWhenNothingIsReadable) {
    for (const char *content : {"", "on", " \n", "-", ".5"}) {
        world::write_file(GetParam().path, content);
        for (const uint32_t value : {0u, 1u}) {
            EXPECT_EQ(get(value), value) << '"' << content << '"';
        }
        EXPECT_EQ(world::read_file(GetParam().path), content);
    }
}

TEST_P(NumberGetters, NullPointer) {
    for (const bool exists : {true, false}) {
        world::reset();
        if (exists) {
            world::write_file(GetParam().path, "1");
        }
        const OpenWatch opened(folder_of(GetParam().path));
        EXPECT_EQ(GetParam().get(nullptr), GetParam().null_result);
        if (GetParam().null_result != 0) {
            EXPECT_THAT(opened.seen(), testing::IsEmpty());
        }
    }
}

INSTANTIATE_TEST_SUITE_P(StateFiles, NumberGetters, testing::ValuesIn(number_getters()), RowName());

class NormalisingGetters : public StateTest {};

// Whatever the variable held before, only the values of the setting leave these getters.
TEST_F(NormalisingGetters, NormaliseAnUnreadableFileToo) {
    for (const NumberGetter &getter : number_getters()) {
        const bool normalises = getter.path.compare(0, kSettings.size(), kSettings) == 0;
        world::write_file(getter.path, "x");
        uint32_t value = 99;
        getter.get(&value);
        EXPECT_EQ(value, !normalises                            ? 99u
                         : getter.name == "api_cloud_debug_get" ? 0u
                                                                : 1u)
            << getter.name;
    }
}

class TextGetters : public StateTest, public testing::WithParamInterface<TextGetter> {
  protected:
    uint32_t get() { return GetParam().get(buffer.data()); }

    static void hold(const std::string &content) { world::write_file(GetParam().path, content); }

    void expect_text(const std::string &text) {
        EXPECT_EQ(buffer.first(text.size() + 1), text + '\0');
        EXPECT_TRUE(buffer.untouched_from(text.size() + 1));
    }

    Guarded<kMost + 1> buffer;
};

TEST_P(TextGetters, ReadsOneWord) {
    const std::pair<std::string, std::string> rows[] = {
        {"word", "word"},    {"/a b", "/a"},
        {"/a\nb", "/a"},     {"/a\tb", "/a"},
        {" \n\t/a\n", "/a"}, {"https://host:8443/p?q=%d%s#f", "https://host:8443/p?q=%d%s#f"},
        {"x", "x"},
    };
    for (const auto &[content, word] : rows) {
        hold(content);
        buffer = {};
        EXPECT_EQ(get(), 0u);
        expect_text(word);
        EXPECT_EQ(world::read_file(GetParam().path), content);
    }
    EXPECT_TRUE(only_file_is(GetParam().path));
}

TEST_P(TextGetters, NeverWritesBeyondTheCallersBuffer) {
    for (const size_t length : {kMost, kMost + 1, kMost + 100, size_t{1} << 20}) {
        hold(std::string(length, 'w'));
        buffer = {};
        EXPECT_EQ(get(), 0u);
        expect_text(std::string(kMost, 'w'));
    }
}

TEST_P(TextGetters, KeepsTheBufferWhenNothingIsReadable) {
    for (const char *content : {"", " ", "\n\n"}) {
        hold(content);
        EXPECT_EQ(get(), 0u);
        EXPECT_TRUE(buffer.untouched_from(0));
    }
}

TEST_P(TextGetters, MissingFile) {
    for (const bool folder : {true, false}) {
        if (!folder) {
            remove_state_folders();
        }
        buffer = {};
        EXPECT_EQ(get(), 0u);
        if (GetParam().missing != nullptr) {
            expect_text(GetParam().missing);
        } else {
            EXPECT_TRUE(buffer.untouched_from(0));
        }
    }
    EXPECT_FALSE(state_folders_exist());
    EXPECT_TRUE(no_files());
}

TEST_P(TextGetters, NullBufferOpensNothing) {
    hold("word");
    const OpenWatch opened(folder_of(GetParam().path));
    EXPECT_EQ(GetParam().get(nullptr), GetParam().null_result);
    EXPECT_THAT(opened.seen(), testing::IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(StateFiles, TextGetters, testing::ValuesIn(text_getters()), RowName());

TEST(TextDefaults, AreFourDifferentHosts) {
    const std::set<std::string> hosts = {CLOUD_CHECKIN_HOST, CLOUD_CONNECTION_KEEPER_HOST,
                                         CLOUD_QUENTA_HOST, CLOUD_CATALOGUE_HOST};
    EXPECT_EQ(hosts.size(), 4u) << "a mixed-up default would go unnoticed";
    EXPECT_EQ(hosts.count(""), 0u);
}

class TextSetters : public StateTest, public testing::WithParamInterface<TextSetter> {
  protected:
    static uint32_t set(const std::string &value) { return GetParam().set(value.c_str()); }
    static std::string content() { return world::read_file(GetParam().path); }
};

TEST_P(TextSetters, WritesTheTextAndNothingElse) {
    for (const char *text : {"word", "a longer text", "x", "", "two\nlines\n", "100%d%s%n", " "}) {
        EXPECT_EQ(set(text), 0u);
        EXPECT_EQ(content(), text);
    }
    EXPECT_TRUE(only_file_is(GetParam().path));
}

TEST_P(TextSetters, CutsAt255Characters) {
    for (const size_t length : {254u, 255u, 256u, 257u, 10000u}) {
        EXPECT_EQ(set(std::string(length, 'w')), 0u);
        EXPECT_EQ(content(), std::string(std::min(length, size_t{255}), 'w'));
    }
}

TEST_P(TextSetters, MissingFolderIsNotCreated) {
    remove_state_folders();
    EXPECT_EQ(set("word"), GetParam().refused);
    EXPECT_FALSE(state_folders_exist());
}

TEST_P(TextSetters, FileThatCannotBeOpened) {
    std::filesystem::create_directories(GetParam().path);
    EXPECT_EQ(set("word"), GetParam().refused);
}

TEST_P(TextSetters, NullTextLeavesTheFileAlone) {
    world::write_file(GetParam().path, "before");
    EXPECT_EQ(GetParam().set(nullptr), GetParam().refused);
    EXPECT_EQ(content(), "before");
}

INSTANTIATE_TEST_SUITE_P(StateFiles, TextSetters, testing::ValuesIn(text_setters()), RowName());

class NumberSetters : public StateTest, public testing::WithParamInterface<NumberSetter> {};

TEST_P(NumberSetters, WriteTheDigitsAndNothingElse) {
    world::write_file(GetParam().path, "a longer content than any number has");
    for (const int64_t value : GetParam().values) {
        EXPECT_EQ(GetParam().set(value), 0u);
        EXPECT_EQ(world::read_file(GetParam().path), std::to_string(value));
    }
    EXPECT_TRUE(only_file_is(GetParam().path));
}

TEST_P(NumberSetters, MissingFolderIsNotCreated) {
    remove_state_folders();
    EXPECT_EQ(GetParam().set(5), 1u);
    EXPECT_FALSE(state_folders_exist());
}

INSTANTIATE_TEST_SUITE_P(StateFiles, NumberSetters, testing::ValuesIn(number_setters()), RowName());

}  // namespace
