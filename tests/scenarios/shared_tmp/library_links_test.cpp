// The library's own files: the turn file is never another's link; the others go where a link leads.
#include <cstring>

#include "cloud_http/upload_url.h"
#include "device/led.h"
#include "kdump/turn_lock.h"
#include "log/log.h"
#include "shared_tmp.h"
#include "state/digest.h"
#include "state/state_files.h"
#include "testing/descriptors.h"
#include "testing/paths.h"

namespace {

class LinkedFile : public SharedTmp {
  protected:
    ~LinkedFile() override { g_file_log = 0; }
};

TEST_F(LinkedFile, IsNoTurnFile) {
    const long opened = open_descriptors();
    std::filesystem::permissions("/tmp", std::filesystem::perms(0777));  // the kernel follows links
    for (const char *target : {kVictim, "/mnt/data/nowhere"}) {
        unlink(kTurnFile.c_str());
        std::filesystem::create_symlink(target, kTurnFile);
        NEEDS_ANOTHER_USER(give_away(kTurnFile));
        g_turn_held = 7;
        EXPECT_EQ(api_get_cloudwtpflag(), -1);
        EXPECT_EQ(api_release_cloudwtpflag(), -1);
        EXPECT_EQ(g_turn_held, 7);
        EXPECT_FALSE(world::exists("/mnt/data/nowhere"));
        EXPECT_EQ(victim(), kVictimContent);
    }
    EXPECT_EQ(open_descriptors(), opened);
}

TEST_F(LinkedFile, ReceivesWhatASetterWrites) {
    link_to_victim(kStatus + "checkin_file");
    EXPECT_EQ(api_checkin_host_set("host"), 0u);
    EXPECT_EQ(victim(), "host");
}

TEST_F(LinkedFile, ReceivesTheBlinkingMark) {
    link_to_victim("/tmp/cloud_blinking");
    EXPECT_EQ(api_system_led_blink(1), 0);
    EXPECT_EQ(victim(), "1");
}

TEST_F(LinkedFile, IsEmptiedByATouch) {
    link_to_victim("/tmp/touched");
    EXPECT_EQ(api_file_touch("/tmp/touched"), 0);
    EXPECT_EQ(victim(), "");
}

TEST_F(LinkedFile, ReceivesTheLog) {
    link_to_victim("/tmp/agent.log");
    std::strcpy(g_log_path, "/tmp/agent.log");
    g_file_log = 1;
    cloud_log("a line\n");
    EXPECT_THAT(victim(), testing::EndsWith("]a line\n"));
}

TEST_F(LinkedFile, IsReadForNameServers) {
    world::write_file(kVictim, "192.0.2.7\n");
    link_to_victim("/tmp/curlDNSFile");
    EXPECT_EQ(ReadCurlDnsFile(), 0);
    EXPECT_STREQ(g_curl_dns_server, "192.0.2.7\n");
}

}  // namespace
