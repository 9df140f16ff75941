#include "device/led.h"

#include <filesystem>

#include "device_test.h"
#include "testing/open_watch.h"

namespace {

constexpr const char *kCloud = "/tmp/cloud_blinking";
constexpr const char *kZorbcon = "/tmp/zorbcon_blinking";
constexpr const char *kBlink = R"(PATCH /api/system/settings/ledblink {"systemLED":"twinkle"})";
constexpr const char *kSteady = R"(PATCH /api/system/settings/ledblink {"systemLED":"solidLight"})";

class Led : public DeviceTest {
  protected:
    Led() { local->on("*", {json_reply(R"({"restful_res":{}})")}); }

    static std::vector<std::string> markers() { return world::list_files("/tmp"); }
};

TEST_F(Led, ModesSetMarkersAndSendBodies) {
    const struct {
        uint32_t mode;
        bool cloud, zorbcon;  // markers before
        std::vector<std::string> markers, requests;
    } rows[] = {
        {0, false, false, {}, {kSteady}},
        {0, true, false, {}, {kSteady}},
        {0, false, true, {kZorbcon}, {}},
        {0, true, true, {kZorbcon}, {}},
        {1, false, false, {kCloud}, {kBlink}},
        {1, true, false, {kCloud}, {kBlink}},
        {1, false, true, {kCloud, kZorbcon}, {kBlink}},
        {2, false, false, {}, {kSteady}},
        {2, true, false, {}, {kSteady}},
        {2, false, true, {}, {kSteady}},
        {2, true, true, {}, {kSteady}},
        {3, true, true, {kCloud, kZorbcon}, {}},
        {3, false, false, {}, {}},
        {0xFFFFFFFF, true, true, {kCloud, kZorbcon}, {}},
    };
    for (const auto &row : rows) {
        world::reset();
        if (row.cloud) {
            world::write_file(kCloud, "1");
        }
        if (row.zorbcon) {
            world::write_file(kZorbcon, "");
        }
        const size_t before = asked().size();
        EXPECT_EQ(api_system_led_blink(row.mode), 0);
        std::vector<std::string> requests = asked();
        requests.erase(requests.begin(), requests.begin() + static_cast<long>(before));
        const std::string what = "mode " + std::to_string(row.mode) + (row.cloud ? " cloud" : "") +
                                 (row.zorbcon ? " zorbcon" : "");
        EXPECT_EQ(markers(), row.markers) << what;
        EXPECT_EQ(requests, row.requests) << what;
        EXPECT_EQ(logged(), row.mode > 2 ? " api_system_led_blink 1869 \n" : "") << what;
    }
}

TEST_F(Led, BlinkTwiceSendsTwiceAndKeepsOneMarkerWithASingleCharacter) {
    world::write_file(kCloud, "old content\n");
    EXPECT_EQ(api_system_led_blink(1), 0);
    EXPECT_EQ(api_system_led_blink(1), 0);
    EXPECT_EQ(asked(), (std::vector<std::string>{kBlink, kBlink}));
    EXPECT_EQ(markers(), std::vector<std::string>{kCloud});
    EXPECT_EQ(world::read_file(kCloud), "1");
}

TEST_F(Led, MarkerIsThereBeforeTheRequest) {
    local.reset();
    for (const uint32_t mode : {1u, 0u}) {
        EXPECT_EQ(api_system_led_blink(mode), 0);
        EXPECT_EQ(markers().size(), mode);
        EXPECT_EQ(logged(), "\ncurl_http 1318 : method PATCH fail error 7\n\n") << "not retried";
    }
}

TEST_F(Led, OutcomeOfTheRequestIsNotExamined) {
    local->on("*", {status_reply(500, "no"), status_reply(204),
                    world::fault_reply(world::Fault::Kind::garbage)});
    for (const uint32_t mode : {1u, 0u, 2u}) {
        EXPECT_EQ(api_system_led_blink(mode), 0);
    }
    EXPECT_EQ(asked(), (std::vector<std::string>{kBlink, kSteady, kSteady}));
}

TEST_F(Led, MarkerThatIsAFolderFailsTheBlinkingOnly) {
    std::filesystem::create_directory(kCloud);
    EXPECT_EQ(api_system_led_blink(1), -1);
    EXPECT_TRUE(asked().empty());
    EXPECT_EQ(logged(), "");
    EXPECT_EQ(api_system_led_blink(0), 0);
    EXPECT_EQ(api_system_led_blink(2), 0);
    EXPECT_EQ(asked(), (std::vector<std::string>{kSteady, kSteady}));
}

TEST_F(Led, OtherAgentsMarkerIsRemovedFirst) {
    world::write_file(kCloud, "1");
    world::write_file(kZorbcon, "");
    const OpenWatch watch("/tmp");
    api_system_led_blink(2);
    EXPECT_THAT(watch.seen(),
                testing::ElementsAre("remove zorbcon_blinking", "remove cloud_blinking"));
}

TEST_F(Led, OtherAgentsMarkerCountsByItsExistenceAlone) {
    std::filesystem::create_directory(kZorbcon);
    EXPECT_EQ(api_system_led_blink(0), 0);
    EXPECT_TRUE(asked().empty());
}

TEST_F(Led, RegistrationFlagHoldsAnyNumber) {
    constexpr const char *kFile = "/mnt/data/iss_config/current_config/zorb_cloud_register_file";
    for (const int value : {-1, 0, 1, 2147483647, -2147483647 - 1}) {
        EXPECT_EQ(api_zorb_cloud_register_set(value), 0);
        EXPECT_EQ(world::read_file(kFile), std::to_string(value));
    }
    std::filesystem::remove(kFile);
    std::filesystem::create_directory(kFile);
    EXPECT_EQ(api_zorb_cloud_register_set(1), -1);
    EXPECT_TRUE(asked().empty());
    EXPECT_EQ(logged(), "");
}

}  // namespace
