// What a power cut cannot take: whoever writes a state file syncs it before closing it.
#include <sys/mount.h>

#include <functional>

#include "accessors.h"
#include "cloud_http/endpoints.h"
#include "device/connection_fail_log.h"
#include "device/led.h"
#include "state/credentials.h"
#include "state/state_files.h"
#include "state_test.h"

namespace {

struct Writer {
    std::string path;
    std::string written;
    std::function<long()> call;
};

uint32_t set_list() {
    char entries[2][256] = {"red", "green"};
    return api_sorvane_list_set(entries, 2, "red");
}

std::vector<Writer> writers() {
    std::vector<Writer> all = {
        {kStatus + "seqno_file", "7", [] { return api_omcloud_seqno_set(7); }},
        {kStatus + "key_file", "new", [] { return api_key_set("new"); }},
        {kStatus + "secret_file", "new", [] { return api_secret_set("new"); }},
        {kStatus + "KDUMPS_file", "new", [] { return api_kdumps_server_set("new"); }},
        {kStatus + "TFA_file", "new", [] { return api_TFA_set("new"); }},
        {kStatus + "sorvane_file", "*red\ngreen\n", [] { return long{set_list()}; }},
        {kStatus + "server_connection_err", "new(7)",
         [] { return long{api_server_connection_err_set("new", 7)}; }},
        {kStatus + "conn_fail_log_time.txt", "0", [] { return api_conn_fail_log_time_set(1); }},
        {kSettings + "zorb_cloud_register_file", "7",
         [] { return api_zorb_cloud_register_set(7); }},
        {"/tmp/cloud_blinking", "1", [] { return api_system_led_blink(1); }},
    };
    for (const TextSetter &row : text_setters()) {
        all.push_back({row.path, "new", [&row] { return long{row.set("new")}; }});
    }
    for (const NumberSetter &row : number_setters()) {
        all.push_back({row.path, "7", [&row] { return long{row.set(7)}; }});
    }
    for (const NumberGetter &row : number_getters()) {
        if (row.creates_file) {
            all.push_back({row.path, "1", [&row] { return long{row.get(nullptr)}; }});
        }
    }
    return all;
}

class Stored : public StateTest {
  protected:
    Stored() {
        g_console_debug = 0;
        calls::seen<::fsync>() = [this](int file) {
            const std::string open = "/proc/self/fd/" + std::to_string(file);
            synced.push_back(std::filesystem::read_symlink(open).string() + ": " +
                             world::read_file(open));
        };
    }
    ~Stored() override {
        calls::seen<::fsync>() = nullptr;
        calls::answer<::fsync>() = nullptr;
        calls::answer<::fopen>() = nullptr;
    }

    static void fail_sync(int error) {
        calls::answer<::fsync>() = [error](int) {
            errno = error;
            return -1;
        };
    }

    static uint32_t detect_dns() {
        uint32_t value = 99;
        EXPECT_EQ(api_cloud_DetectDNS_get(&value), 0u);
        return value;
    }

    const std::string created_ = kSettings + "cloud_DetectDNS";
    std::vector<std::string> synced;  // open file and content at each sync
};

TEST_F(Stored, EveryWriterSyncsAllThatItWrote) {
    for (const Writer &writer : writers()) {
        world::reset();
        synced.clear();
        EXPECT_EQ(writer.call(), 0) << writer.path;
        EXPECT_THAT(synced, testing::ElementsAre(writer.path + ": " + writer.written));
        EXPECT_EQ(world::read_file(writer.path), writer.written);
    }
}

TEST_F(Stored, FailedSyncChangesNoSettersResult) {
    fail_sync(EIO);
    for (const Writer &writer : writers()) {
        if (writer.written != "1" || writer.path == "/tmp/cloud_blinking") {
            EXPECT_EQ(writer.call(), 0) << writer.path;
            EXPECT_EQ(world::read_file(writer.path), writer.written);
        }
    }
}

// A FIFO, a terminal and some file systems cannot sync.
TEST_F(Stored, SyncThatIsNotSupportedIsNoFailure) {
    for (const int error : {EINVAL, ENOTSUP, EROFS}) {
        world::reset();
        fail_sync(error);
        EXPECT_EQ(detect_dns(), 1u);
        EXPECT_EQ(world::read_file(created_), "1") << error;
    }
}

TEST_F(Stored, CreatedFileThatCannotBeSyncedIsRemoved) {
    fail_sync(EIO);
    EXPECT_EQ(detect_dns(), 1u);
    EXPECT_TRUE(no_files());
    calls::answer<::fsync>() = nullptr;
    EXPECT_EQ(detect_dns(), 1u);
    EXPECT_EQ(world::read_file(created_), "1") << "the next call creates it";
}

TEST_F(Stored, CreatedFileOnAFullFlashIsRemoved) {
    ASSERT_EQ(mount("tmpfs", kSettings.c_str(), "tmpfs", 0, "size=4k"), 0);
    world::write_file(kSettings + "filler", std::string(4096, 'f'));
    EXPECT_EQ(detect_dns(), 1u);
    EXPECT_FALSE(world::exists(created_));
    std::filesystem::remove(kSettings + "filler");
    EXPECT_EQ(detect_dns(), 1u);
    EXPECT_EQ(world::read_file(created_), "1") << "the next call creates it";
    umount(kSettings.c_str());
}

TEST_F(Stored, FileBelowAFileIsNotCreated) {
    std::filesystem::remove_all(kSettings);
    world::write_file(kSettings.substr(0, kSettings.size() - 1), "a file");
    EXPECT_EQ(detect_dns(), 1u);
    EXPECT_EQ(world::read_file(kSettings.substr(0, kSettings.size() - 1)), "a file");
}

TEST_F(Stored, FileThatALinkNamesIsLeftAlone) {
    fail_sync(EIO);
    std::filesystem::create_symlink("/tmp/elsewhere", created_);
    EXPECT_EQ(detect_dns(), 1u);
    EXPECT_TRUE(std::filesystem::is_symlink(created_));
    EXPECT_EQ(world::read_file("/tmp/elsewhere"), "1");
}

TEST_F(Stored, FileThatWasThereIsLeftAlone) {
    fail_sync(EIO);
    world::write_file(created_, "0");
    calls::answer<::fopen>() = [](const char *, const char *mode) -> std::optional<std::FILE *> {
        return mode[0] == 'r' ? std::optional<std::FILE *>(nullptr) : std::nullopt;
    };
    EXPECT_EQ(detect_dns(), 1u);
    calls::answer<::fopen>() = nullptr;
    EXPECT_EQ(world::read_file(created_), "1");
}

}  // namespace
