#include "testing/private_world.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "testing/shown_folders.h"
#include "testing/spawn.h"
#include "testing/world_test.h"

namespace {

class PrivateWorld : public world::WorldTest {};

std::string shell(const std::string &command) {
    return world::run_and_read(world::Command({"sh", "-c", command})).output;
}

TEST_F(PrivateWorld, OffersTheFoldersOfADevice) {
    EXPECT_TRUE(std::filesystem::is_directory("/tmp/app/cloud_tmp"));
    EXPECT_TRUE(std::filesystem::is_directory("/mnt/data/iss_config/current_config"));
    EXPECT_EQ(std::filesystem::current_path(), world::kDeviceDir);
    EXPECT_TRUE(world::list_files("/tmp").empty());
}

TEST_F(PrivateWorld, ConsoleTakesMoreThanAPipeHoldsAndCutsStampsOnly) {
    EXPECT_TRUE(std::filesystem::is_fifo("/dev/console"));
    shell("printf '[Mon Nov 16 06:57:51 2026]main\\n\\n[not a stamp] x\\n' >/dev/console");
    shell("printf '[Sun Feb  1 06:57:51 2026]\\n' >/dev/console");
    EXPECT_EQ(console.text_without_stamps(), "main\n\n[not a stamp] x\n\n");
    console.clear();
    shell("head -c 5000000 /dev/zero >/dev/console");
    EXPECT_EQ(console.text().size(), 5000000u);
}

TEST_F(PrivateWorld, HasTheUsualDevices) {
    EXPECT_EQ(shell("head -c 4 /dev/zero | wc -c; echo lost >/dev/null; cat /dev/null"), "4\n");
    EXPECT_EQ(shell("head -c 4 /dev/urandom | wc -c"), "4\n");
}

TEST_F(PrivateWorld, SeesItsOwnProcessesOnly) {
    EXPECT_LT(getpid(), 100);
    EXPECT_EQ(std::filesystem::canonical("/proc/self").filename(), std::to_string(getpid()));
}

TEST_F(PrivateWorld, HasLoopbackAndNothingElse) {
    EXPECT_EQ(shell("tail -n +3 /proc/net/dev | cut -d: -f1 | tr -d ' '"), "lo\n");
    for (uint16_t port : {uint16_t{8000}, uint16_t{443}, uint16_t{53}}) {
        const int handle = socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in place = {};
        place.sin_family = AF_INET;
        place.sin_port = htons(port);
        place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        EXPECT_EQ(bind(handle, reinterpret_cast<sockaddr *>(&place), sizeof place), 0) << port;
        close(handle);
    }
}

TEST_F(PrivateWorld, ResolvesOnlyTheHostsItIsTold) {
    addrinfo *found = nullptr;
    EXPECT_NE(getaddrinfo("cloud.test", "443", nullptr, &found), 0);
    world::add_host("cloud.test", "127.0.0.7");
    ASSERT_EQ(getaddrinfo("cloud.test", "443", nullptr, &found), 0);
    EXPECT_EQ(reinterpret_cast<sockaddr_in *>(found->ai_addr)->sin_addr.s_addr,
              inet_addr("127.0.0.7"));
    freeaddrinfo(found);
}

TEST_F(PrivateWorld, ProjectStaysReachable) {
    EXPECT_TRUE(std::filesystem::exists(world::inside(SLEEP_STAND_IN)));
    EXPECT_TRUE(std::filesystem::exists("/etc/passwd"));
    EXPECT_TRUE(std::filesystem::is_empty("/etc/ssl/certs"));
}

TEST_F(PrivateWorld, ResetRemovesWhatATestLeaves) {
    world::write_file("/tmp/a/b/c", "x");
    world::write_file("/mnt/data/iss_config/segmentrace.txt", "x");
    world::write_file("KEY", "x");
    ASSERT_EQ(symlink("/tmp/nowhere", "/tmp/dangling"), 0);
    ASSERT_EQ(mkfifo("/tmp/fifo", 0600), 0);
    EXPECT_EQ(world::list_files("/tmp").size(), 3u);
    world::reset();
    EXPECT_TRUE(world::list_files("/tmp").empty());
    EXPECT_TRUE(world::list_files("/mnt").empty());
    EXPECT_TRUE(world::list_files(world::kDeviceDir).empty());
    EXPECT_TRUE(std::filesystem::is_directory("/tmp/app/cloud_tmp"));
}

}  // namespace
