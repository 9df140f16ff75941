#include "cloud_http/endpoints.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <vector>

#include "cloud_http_fixture.h"
#include "deployment.h"

namespace {

struct Endpoint : NamedRow {
    int (*get)(char *out);
    int (*set)(const char *url);
    std::string override_file;
    std::string default_url;
    std::string log_prefix;
};

// The caller's 1024 bytes with a guard behind them.
class Buffer {
  public:
    explicit Buffer(char fill = '\0') : bytes_(kSize + 512, fill) {
        std::fill(bytes_.begin() + kSize, bytes_.end(), 'g');
    }
    char *data() { return bytes_.data(); }
    void put(const std::string &text) { std::copy_n(text.c_str(), text.size() + 1, data()); }
    std::string text() const { return std::string(bytes_.data()); }
    bool guard_is_whole() const {
        return std::all_of(bytes_.begin() + kSize, bytes_.end(), [](char c) { return c == 'g'; });
    }

  private:
    static constexpr std::ptrdiff_t kSize = 1024;
    std::vector<char> bytes_;
};

class EndpointTest : public CloudHttpTest, public testing::WithParamInterface<Endpoint> {
  protected:
    void override_with(const std::string &content) {
        world::write_file(GetParam().override_file, content);
    }
    int get() { return GetParam().get(out.data()); }
    std::string length_line(size_t length) const {
        return "\n" + GetParam().log_prefix + " " + std::to_string(length) + "\n\n";
    }

    Buffer out;
};

INSTANTIATE_TEST_SUITE_P(
    Of, EndpointTest,
    testing::Values(Endpoint{"Kdumps", api_kdumps_server_get, api_kdumps_server_set,
                             "/tmp/app/cloud_tmp/KDUMPS_file",
                             "https://" CLOUD_TFA_HOST "/dev/tfaapi/kdumps",
                             "api_kdumps_server_get 135"},
                    Endpoint{"Authentication", api_TFA_get, api_TFA_set,
                             "/tmp/app/cloud_tmp/TFA_file",
                             "https://" CLOUD_TFA_HOST "/dev/tfaapi/auth", "api_TFA_get 231"}),
    RowName());

TEST_P(EndpointTest, IsTheDefaultWithoutAnOverride) {
    EXPECT_EQ(get(), 0);
    EXPECT_EQ(out.text(), GetParam().default_url);
    EXPECT_EQ(console.text(), "");
}

TEST_P(EndpointTest, RefusesOnlyANullBuffer) {
    EXPECT_EQ(GetParam().get(nullptr), 1);
    override_with("https://h/p");
    EXPECT_EQ(GetParam().get(nullptr), 1);
    EXPECT_EQ(console.text(), "");
}

TEST_P(EndpointTest, TakesAWordWithTheSchemeAsItIs) {
    const struct {
        const char *content;
        const char *url;
    } rows[] = {
        {"https://h/p", "https://h/p"},
        {"https://h/p\n", "https://h/p"},
        {"https://h/p and more text", "https://h/p"},
        {"https://h/p\tmore", "https://h/p"},
        {" \n\thttps://h/p", "https://h/p"},
        {"https://", "https://"},
        {"via/https://h/p", "via/https://h/p"},
        {"https://h/%s%n", "https://h/%s%n"},
    };
    for (const auto &row : rows) {
        override_with(row.content);
        out = Buffer();
        EXPECT_EQ(get(), 0);
        EXPECT_EQ(out.text(), row.url) << row.content;
        EXPECT_EQ(console.text(), "") << row.content;
    }
}

TEST_P(EndpointTest, PutsTheSchemeBeforeAWordWithoutIt) {
    const struct {
        const char *content;
        const char *url;
    } rows[] = {
        {"h.test/p", "https://h.test/p"},
        {"h.test/p https://more", "https://h.test/p"},
        {"http://h/p", "https://http://h/p"},
        {"HTTPS://h/p", "https://HTTPS://h/p"},
        {"https:/h", "https://https:/h"},
        {"%s%d%n", "https://%s%d%n"},
        {"", "https://"},
        {" \n", "https://"},
    };
    for (const auto &row : rows) {
        override_with(row.content);
        out = Buffer();
        console.clear();
        EXPECT_EQ(get(), 0);
        EXPECT_EQ(out.text(), row.url) << row.content;
        EXPECT_EQ(console.text_without_stamps(), length_line(std::strlen(row.url))) << row.content;
    }
}

TEST_P(EndpointTest, AnEmptyFileLeavesTheText) {
    override_with("");
    out.put("https://old/p");
    EXPECT_EQ(get(), 0);
    EXPECT_EQ(out.text(), "https://old/p");
    EXPECT_EQ(console.text(), "");
    out.put("old/p");
    EXPECT_EQ(get(), 0);
    EXPECT_EQ(out.text(), "https://old/p");
    EXPECT_EQ(console.text_without_stamps(), length_line(13));
}

// The prefixed text is copied without a terminator, so what a buffer held there shows up behind.
TEST_P(EndpointTest, RunsOnIntoABufferThatIsNotZeroed) {
    override_with("abc");
    out = Buffer('z');
    out.data()[20] = '\0';
    EXPECT_EQ(get(), 0);
    EXPECT_EQ(out.text(), "https://abczzzzzzzzz");
    EXPECT_EQ(console.text_without_stamps(), length_line(11));
}

TEST_P(EndpointTest, TerminatesTheDefaultAndAWholeWord) {
    out = Buffer('z');
    EXPECT_EQ(get(), 0);
    EXPECT_EQ(out.text(), GetParam().default_url);
    override_with("https://h");
    out = Buffer('z');
    EXPECT_EQ(get(), 0);
    EXPECT_EQ(out.text(), "https://h");
}

TEST_P(EndpointTest, TakesNoMoreThanTheBufferHolds) {
    for (const size_t length : {1022u, 1023u, 1024u, 1025u, 5000u, 1u << 20}) {
        const std::string word = "https://" + std::string(length - 8, 'w');
        override_with(word);
        out = Buffer();
        EXPECT_EQ(get(), 0);
        EXPECT_EQ(out.text(), word.substr(0, 1023)) << length;
        EXPECT_TRUE(out.guard_is_whole()) << length;
    }
}

TEST_P(EndpointTest, CutsThePrefixedTextAt255) {
    for (const size_t length : {246u, 247u, 248u, 249u, 1015u, 1023u, 1024u, 5000u}) {
        const std::string word(length, 'w');
        const std::string whole = ("https://" + word).substr(0, 255);
        override_with(word);
        out = Buffer();
        console.clear();
        EXPECT_EQ(get(), 0);
        EXPECT_EQ(out.text().substr(0, whole.size()), whole) << length;
        EXPECT_EQ(console.text_without_stamps(), length_line(whole.size())) << length;
        EXPECT_TRUE(out.guard_is_whole()) << length;
    }
}

TEST_P(EndpointTest, SetWritesTheTextAndNothingElse) {
    for (const char *url : {"https://a.very.long.host.test/p", "h/p", "", "two words", "%s%n"}) {
        EXPECT_EQ(GetParam().set(url), 0);
        EXPECT_EQ(world::read_file(GetParam().override_file), url);
    }
    EXPECT_EQ(world::list_files("/tmp"), std::vector<std::string>{GetParam().override_file});
    EXPECT_EQ(console.text(), "");
}

TEST_P(EndpointTest, SetCutsAt255) {
    for (const size_t length : {254u, 255u, 256u, 257u, 5000u}) {
        const std::string url(length, 'u');
        EXPECT_EQ(GetParam().set(url.c_str()), 0);
        EXPECT_EQ(world::read_file(GetParam().override_file), url.substr(0, 255));
    }
}

TEST_P(EndpointTest, SetFailsWithoutAFolderOrAText) {
    EXPECT_EQ(GetParam().set(nullptr), 1);
    EXPECT_FALSE(world::exists(GetParam().override_file));
    std::filesystem::remove_all("/tmp/app");
    EXPECT_EQ(GetParam().set("https://h/p"), 1);
    EXPECT_EQ(console.text(), "");
}

TEST_P(EndpointTest, GetReturnsWhatSetWrote) {
    EXPECT_EQ(GetParam().set("https://h.test/path?a=b"), 0);
    EXPECT_EQ(get(), 0);
    EXPECT_EQ(out.text(), "https://h.test/path?a=b");
    EXPECT_EQ(console.text(), "");
}

}  // namespace
