// An agent may use any name that no public header declares: the library neither takes the agent's
// definition for its own nor replaces it.
#include <gmock/gmock.h>

#include <cstdarg>
#include <cstdio>
#include <filesystem>

#include "cloud_http/curl_http.h"
#include "json_parser/json_parser.h"
#include "log/log.h"
#include "state/credentials.h"
#include "state/state_files.h"
#include "testing/files.h"

namespace {
int calls = 0;  // of the definitions below
}

bool read_value(const char * /*path*/, const char * /*conversion*/, void * /*value*/) noexcept {
    return ++calls != 0;
}
bool write_value(const char * /*path*/, const char * /*format*/, ...) noexcept {
    return ++calls != 0;
}
const char *copy_of(const char * /*text*/) noexcept { return ++calls, "the agent's"; }
const char *new_node(int32_t /*kind*/) noexcept { return ++calls, "the agent's"; }
bool bare_format(std::FILE * /*out*/, const char * /*text*/) noexcept { return ++calls != 0; }

struct Transfer {
    explicit Transfer(const char * /*url*/) noexcept { ++calls; }
    int perform() noexcept { return ++calls; }
};

template <std::size_t Size>
struct FixedText {
    void format(const char * /*format*/, ...) noexcept { ++calls; }
};
template struct FixedText<128>;

namespace {

TEST(OwnNames, AreNotTakenForTheLibrarys) {
    calls = 0;
    std::filesystem::create_directories("/tmp/app/cloud_tmp");
    EXPECT_EQ(api_key_set("key"), 0);
    EXPECT_EQ(world::read_file("/tmp/app/cloud_tmp/key_file"), "key");
    int32_t interval = 0;
    EXPECT_EQ(api_checkin_interval_set(7), 0U);
    EXPECT_EQ(api_checkin_interval_get(&interval), 0U);
    EXPECT_EQ(interval, 7);

    JsonNode *const object = createJsonObject();
    addJsonStringToObject(object, "a", "b");
    EXPECT_STREQ(getJsonStringValueForKey(object, "a"), "b");
    deleteJson(object);

    g_file_log = 1;
    std::snprintf(g_log_path, sizeof g_log_path, "/tmp/agent.log");
    cloud_log("%s", "50%");
    cloud_log("%s", "%d\n");
    g_file_log = 0;
    EXPECT_THAT(world::read_file("/tmp/agent.log"), testing::HasSubstr("]0\n"));

    EXPECT_NE(http_get("http://127.0.0.1:1/", nullptr), 0);
    EXPECT_EQ(calls, 0);
}

TEST(OwnNames, KeepTheirMeaning) {
    calls = 0;
    int32_t number = 5;
    EXPECT_TRUE(read_value("/none", "%d", &number));
    EXPECT_EQ(number, 5);
    EXPECT_TRUE(write_value("/none/file", "%d", 1));
    EXPECT_STREQ(copy_of("text"), "the agent's");
    EXPECT_STREQ(new_node(JSON_KIND_OBJECT), "the agent's");
    EXPECT_TRUE(bare_format(nullptr, "%"));
    EXPECT_EQ(Transfer("http://127.0.0.1:1/").perform(), 7);
    FixedText<128>().format("%s", "text");
    EXPECT_EQ(calls, 8);
}

}  // namespace
