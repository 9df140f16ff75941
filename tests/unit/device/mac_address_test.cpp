#include <cstring>

#include "device/system_status.h"
#include "device_test.h"
#include "state/device_identity.h"

namespace {

class MacAddress : public DeviceTest {
  protected:
    MacAddress() { fill('#'); }
    ~MacAddress() override { fill('\0'); }

    static void fill(char byte) {
        std::memset(sys_mac_addr, byte, sizeof sys_mac_addr);
        std::memset(sys_mac_addr_compact, byte, sizeof sys_mac_addr_compact);
    }

    static std::string whole(const char (&buffer)[32]) { return std::string(buffer, 32); }
    static std::string padded(const std::string &text) {
        return text + std::string(32 - text.size(), '\0');
    }
};

TEST_F(MacAddress, FillsBothTextsToTheirLastByte) {
    const std::string longest(31, 'a');
    const struct {
        std::string reported, plain, compact;
    } rows[] = {
        {"88:dc:96:01:02:03", "88:dc:96:01:02:03", "88dc96010203"},
        {"aa::bb", "aa::bb", "aabb"},
        {"::aa:", "::aa:", "aa"},
        {":", ":", ""},
        {"", "", ""},
        {"88-dc-96-01-02-03", "88-dc-96-01-02-03", "88-dc-96-01-02-03"},
        {"88DC96010203", "88DC96010203", "88DC96010203"},
        {"%s%n:%d", "%s%n:%d", "%s%n%d"},
        {longest, longest, longest},
        {longest + "b", longest, longest},
        {longest + std::string(300, 'b'), longest, longest},
    };
    for (const auto &row : rows) {
        fill('#');
        set_status(R"("macAddr":")" + row.reported + "\"");
        EXPECT_EQ(sn_get_mac_addr(), 0) << row.reported;
        EXPECT_EQ(whole(sys_mac_addr), padded(row.plain));
        EXPECT_EQ(whole(sys_mac_addr_compact), padded(row.compact));
    }
    EXPECT_EQ(logged(), "");
    EXPECT_EQ(asked()[0], "GET /api/system/status");
}

TEST_F(MacAddress, OverlongAddressWithColonsIsCutInEachText) {
    std::string reported;
    for (int pair = 10; pair < 30; ++pair) {
        reported += std::to_string(pair) + ":";
    }
    set_status(R"("macAddr":")" + reported + "\"");
    EXPECT_EQ(sn_get_mac_addr(), 0);
    EXPECT_EQ(whole(sys_mac_addr), padded(reported.substr(0, 31)));
    EXPECT_EQ(std::strlen(sys_mac_addr_compact), strnlen(sys_mac_addr_compact, 31));
    EXPECT_EQ(std::string(sys_mac_addr_compact).substr(0, 20), "10111213141516171819");
}

TEST_F(MacAddress, UnusableStatusLeavesBothTextsAsTheyWere) {
    for (const UnusableReply &row : unusable_replies(1455)) {
        local->on("*", {row.reply});
        EXPECT_EQ(sn_get_mac_addr(), -1) << row.what;
        EXPECT_EQ(logged(), row.logged) << row.what;
    }
    for (const char *members : {"", R"("macAddr":123)", R"("macAddr":null)"}) {
        set_status(members);
        EXPECT_EQ(sn_get_mac_addr(), -1) << members;
        EXPECT_EQ(logged(), "") << members;
    }
    local.reset();
    EXPECT_EQ(sn_get_mac_addr(), -1);
    EXPECT_EQ(whole(sys_mac_addr), std::string(32, '#'));
    EXPECT_EQ(whole(sys_mac_addr_compact), std::string(32, '#'));
}

}  // namespace
