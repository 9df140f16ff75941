#include "device/system_status.h"
#include "device_test.h"

namespace {

class UpTime : public DeviceTest {
  protected:
    static int32_t probe() {
        int32_t up_time = 12345;
        EXPECT_EQ(sn_get_sys_up_time(&up_time), 0);
        return up_time;
    }
};

TEST_F(UpTime, TakesTheNumber) {
    const struct {
        const char *members;
        int32_t up_time;
    } rows[] = {
        {R"("upTime":1234)", 1234},
        {R"("upTime":0)", 0},
        {R"("upTime":-7)", -7},
        {R"("upTime":80.9)", 80},
        {R"("upTime":2147483647)", 2147483647},
    };
    for (const auto &row : rows) {
        set_status(row.members);
        EXPECT_EQ(probe(), row.up_time) << row.members;
    }
    EXPECT_EQ(logged(), "");
    EXPECT_EQ(asked()[0], "GET /api/system/status");
}

TEST_F(UpTime, WithoutANumberIsMinusOne) {
    for (const char *members : {"", R"("upTime":"1234")", R"("upTime":true)", R"("upTime":null)",
                                R"("upTime":{"upTime":5})"}) {
        set_status(members);
        EXPECT_EQ(probe(), -1) << members;
    }
    EXPECT_EQ(logged(), "");
}

TEST_F(UpTime, UnusableStatusIsMinusTwoAndLogged) {
    constexpr const char *kLine = "\n\nsn_get_sys_up_time 1590 (null)\n\n\n";
    for (const UnusableReply &row : unusable_replies(1588)) {
        local->on("*", {row.reply});
        EXPECT_EQ(probe(), -2) << row.what;
        EXPECT_EQ(logged(), row.logged + kLine) << row.what;
    }
    local.reset();
    EXPECT_EQ(probe(), -2);
    EXPECT_EQ(logged(), std::string("\ncurl_http 1318 : method GET fail error 7\n\n") + kLine);
}

TEST_F(UpTime, NullOutIsAccepted) {
    set_status(R"("upTime":1)");
    EXPECT_EQ(sn_get_sys_up_time(nullptr), 0);
}

}  // namespace
