#include "cloud_http/endpoints.h"

#include <algorithm>
#include <filesystem>

#include "deployment.h"
#include "testing/guarded.h"
#include "testing/logged_test.h"
#include "testing/named_row.h"

namespace {

struct Endpoint : NamedRow {
    int (*get)(char *out);
    int (*set)(const char *url);
    std::string override_file;
    std::string default_url;
    std::string log_prefix;
};

class EndpointTest : public LoggedTest, public testing::WithParamInterface<Endpoint> {
  protected:
    // The text that the getter leaves in a buffer which holds `before`, zeros behind it.
    std::string get(const std::string &before = "") {
        std::fill_n(out.data(), 1024, '\0');
        out.set(before);
        return get_into_used_buffer();
    }
    std::string get_into_used_buffer() {
        EXPECT_EQ(GetParam().get(out.data()), 0);
        EXPECT_TRUE(out.untouched_from(1024));
        return out.data();
    }
    // The same of the override file's content.
    std::string get_of(const std::string &content) {
        override_with(content);
        return get();
    }
    static void override_with(const std::string &content) {
        world::write_file(GetParam().override_file, content);
    }
    static std::string length_line(size_t length) {
        return "\n" + GetParam().log_prefix + " " + std::to_string(length) + "\n\n";
    }

    Guarded<1024> out;
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
    EXPECT_EQ(get(), GetParam().default_url);
    EXPECT_EQ(logged(), "");
}

TEST_P(EndpointTest, RefusesOnlyANullBuffer) {
    EXPECT_EQ(GetParam().get(nullptr), 1);
    override_with("https://h/p");
    EXPECT_EQ(GetParam().get(nullptr), 1);
    EXPECT_EQ(logged(), "");
}

TEST_P(EndpointTest, IsTheFilesFirstWordWithTheScheme) {
    const struct {
        const char *content;
        std::string url;
        bool is_prefixed;
    } rows[] = {
        {"https://h/p", "https://h/p", false},
        {"https://h/p\n", "https://h/p", false},
        {"https://h/p and more text", "https://h/p", false},
        {"https://h/p\tmore", "https://h/p", false},
        {" \n\thttps://h/p", "https://h/p", false},
        {"https://", "https://", false},
        {"via/https://h/p", "via/https://h/p", false},
        {"https://h/%s%n", "https://h/%s%n", false},
        {"h.test/p", "https://h.test/p", true},
        {"h.test/p https://more", "https://h.test/p", true},
        {"http://h/p", "https://http://h/p", true},
        {"HTTPS://h/p", "https://HTTPS://h/p", true},
        {"https:/h", "https://https:/h", true},
        {"%s%d%n", "https://%s%d%n", true},
        {"", "https://", true},
        {" \n", "https://", true},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(get_of(row.content), row.url) << row.content;
        EXPECT_EQ(logged(), row.is_prefixed ? length_line(row.url.size()) : "") << row.content;
    }
}

TEST_P(EndpointTest, AnEmptyFileLeavesTheText) {
    override_with("");
    EXPECT_EQ(get("https://old/p"), "https://old/p");
    EXPECT_EQ(logged(), "");
    EXPECT_EQ(get("old/p"), "https://old/p");
    EXPECT_EQ(logged(), length_line(13));
}

// The prefixed text is copied without a terminator, so what a buffer held there shows up behind.
TEST_P(EndpointTest, RunsOnIntoABufferThatIsNotZeroed) {
    override_with("abc");
    out.data()[20] = '\0';
    EXPECT_EQ(get_into_used_buffer(), "https://abcZZZZZZZZZ");
    EXPECT_EQ(logged(), length_line(11));
}

TEST_P(EndpointTest, TerminatesTheDefaultAndAWholeWord) {
    EXPECT_EQ(get_into_used_buffer(), GetParam().default_url);
    override_with("https://h");
    out = {};
    EXPECT_EQ(get_into_used_buffer(), "https://h");
}

TEST_P(EndpointTest, TakesNoMoreThanTheBufferHolds) {
    for (const size_t length : {1022u, 1023u, 1024u, 1025u, 5000u, 1u << 20}) {
        const std::string word = "https://" + std::string(length - 8, 'w');
        EXPECT_EQ(get_of(word), word.substr(0, 1023)) << length;
    }
}

TEST_P(EndpointTest, CutsThePrefixedTextAt255) {
    for (const size_t length : {246u, 247u, 248u, 249u, 1015u, 1023u, 1024u, 5000u}) {
        const std::string word(length, 'w');
        const std::string whole = ("https://" + word).substr(0, 255);
        EXPECT_EQ(get_of(word).substr(0, whole.size()), whole) << length;
        EXPECT_EQ(logged(), length_line(whole.size())) << length;
    }
}

TEST_P(EndpointTest, SetWritesTheTextAndNothingElse) {
    for (const char *url : {"https://a.very.long.host.test/p", "h/p", "", "two words", "%s%n"}) {
        EXPECT_EQ(GetParam().set(url), 0);
        EXPECT_EQ(world::read_file(GetParam().override_file), url);
    }
    EXPECT_EQ(world::list_files("/tmp"), std::vector<std::string>{GetParam().override_file});
    EXPECT_EQ(logged(), "");
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
    EXPECT_EQ(logged(), "");
}

TEST_P(EndpointTest, GetReturnsWhatSetWrote) {
    EXPECT_EQ(GetParam().set("https://h.test/path?a=b"), 0);
    EXPECT_EQ(get(), "https://h.test/path?a=b");
}

}  // namespace
