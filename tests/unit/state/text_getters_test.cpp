#include <set>

#include "accessors.h"
#include "deployment.h"
#include "state_test.h"
#include "testing/guarded.h"
#include "testing/open_watch.h"

namespace {

constexpr size_t kMost = 255;  // characters that a getter stores

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

TEST_P(TextGetters, OpensItsFileOnceForReading) {
    hold("word");
    const OpenWatch opened(folder_of(GetParam().path));
    get();
    const std::string name = name_of(GetParam().path);
    EXPECT_THAT(opened.seen(), testing::ElementsAre("open " + name, "read " + name));
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

}  // namespace
