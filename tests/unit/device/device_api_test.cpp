#include "device/device_api.h"

#include <cstring>

#include "deployment.h"
#include "device_test.h"
#include "testing/guarded.h"

namespace {

constexpr const char *kSiteFile = "/mnt/data/iss_config/current_config/tillet_site";
constexpr const char *kEntry = "api_tillet_host_get 799 \n";
const std::string kOnTheWay =
    "api_tillet_host_get 799 \napi_tillet_host_get 811 \napi_tillet_host_get 822 \n";
constexpr const char *kExit = "api_tillet_host_get 829 \n";

class DeviceApi : public DeviceTest {
  protected:
    DeviceApi() { set_status(R"("serialNo":"SN42")"); }

    // The URL, or "<result>" where it is not 0.
    std::string url(uint32_t region = 0) {
        char out[512] = "";
        const int result = api_tillet_host_get(out, region);
        return result == 0 ? out : "<" + std::to_string(result) + ">" + out;
    }
};

std::string url_at(const std::string &label_and_site) {
    return "https://" + label_and_site + "." CLOUD_BASE_DOMAIN "/v1/devices/SN42";
}

TEST_F(DeviceApi, RegionsChooseTheHost) {
    EXPECT_EQ(url(0), url_at("tillet.production"));
    EXPECT_EQ(logged(), kOnTheWay);
    EXPECT_EQ(url(1), url_at("tillet-jp.production"));
    EXPECT_EQ(asked(), std::vector<std::string>(2, "GET /api/system/status"));
}

TEST_F(DeviceApi, UnknownRegionEndsAfterTheEntryLine) {
    for (const uint32_t region : {2u, 3u, 0xFFFFFFFFu}) {
        EXPECT_EQ(url(region), "<-1>") << region;
        EXPECT_EQ(logged(), kEntry) << region;
    }
    EXPECT_TRUE(asked().empty());
}

TEST_F(DeviceApi, WorksTheSameWithoutALog) {
    g_console_debug = 0;
    EXPECT_EQ(url(), url_at("tillet.production"));
    set_status("");
    EXPECT_EQ(url(), "<-1>");
    EXPECT_EQ(logged(), "");
}

TEST_F(DeviceApi, SiteIsTheFilesFirstWord) {
    const struct {
        std::string content;
        std::string site;
    } rows[] = {
        {"staging", "staging"},
        {"staging\nsecond", "staging"},
        {" \n\tstaging second", "staging"},
        {"", ""},
        {" \n", ""},
        {std::string(31, 's'), std::string(31, 's')},
        {std::string(32, 's'), std::string(31, 's')},
        {std::string(5000, 's'), std::string(31, 's')},
    };
    for (const auto &row : rows) {
        world::write_file(kSiteFile, row.content);
        EXPECT_EQ(url(), url_at("tillet." + row.site)) << row.content;
        EXPECT_EQ(url(1), url_at("tillet-jp." + row.site)) << row.content;
    }
}

class DeviceApiBuffer : public DeviceApi {
  protected:
    // A call with that result leaves this at the buffer's beginning, and writes nothing more.
    void expect_written(int result, const std::string &text) {
        Guarded<255> out;
        EXPECT_EQ(api_tillet_host_get(out.data(), 0), result);
        EXPECT_EQ(out.first(text.size()), text);
        EXPECT_TRUE(out.untouched_from(text.size())) << "no terminator is added";
    }
};

TEST_F(DeviceApiBuffer, TakesNoMoreThan255Characters) {
    expect_written(0, url_at("tillet.production"));
    const std::string base = url_at("tillet.production");
    const std::string start = base.substr(0, base.size() - std::strlen("SN42"));
    const size_t room = 255 - start.size();
    for (const size_t length : {room - 1, room, room + 1, room + 2000}) {
        const std::string serial(length, '7');
        set_status(R"("serialNo":")" + serial + "\"");
        expect_written(0, (start + serial).substr(0, 255));
    }
}

TEST_F(DeviceApiBuffer, IsUntouchedWithoutAUsableStatus) {
    for_each_unusable_reply("system/status", 824, [&](const std::string &lines) {
        expect_written(-1, "");
        EXPECT_EQ(logged(), kOnTheWay + lines + kExit);
    });
}

TEST_F(DeviceApiBuffer, IsUntouchedWithoutASerialNumber) {
    for (const char *members :
         {"", R"("serialNo":42)", R"("serialNo":null)", R"("serialNo":{"a":"b"})"}) {
        set_status(members);
        expect_written(-1, "");
        EXPECT_EQ(logged(), kOnTheWay) << members;
    }
    EXPECT_EQ(api_tillet_host_get(nullptr, 0), -1) << "a null buffer";
}

}  // namespace
