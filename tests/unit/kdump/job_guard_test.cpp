// Entering a job.
#include "kdump/job_guard.h"

#include <curl/curl.h>
#include <linux/capability.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <filesystem>
#include <functional>

#include "cloud_http/upload_url.h"
#include "deployment.h"
#include "kdump/dump_kinds.h"
#include "testing/descriptors.h"
#include "testing/kinds.h"
#include "testing/logged_test.h"
#include "testing/open_watch.h"
#include "testing/paths.h"
#include "testing/spawn.h"

namespace {

const char *const kMarker = "/tmp/kdump_process_segmentrace";
const std::string kDefaultUrl = "https://" CLOUD_TFA_HOST "/dev/tfaapi/kdumps";

std::string url_line(const std::string &url) {
    return "start_processing 578 KDUMPS_url " + url + "\n";
}

class JobGuard : public LoggedTest {
  protected:
    JobGuard() {
        std::fill(std::begin(KDUMPS_url), std::end(KDUMPS_url), '\0');
        g_turn_lock_absent = 7;
        g_http_initialised = 0;
        calls::answer<curl_global_init>() = [this](long flags) {
            library_starts.push_back(flags);
            if (reads_console) {
                log_at_library_start = console.text_without_stamps();
            }
            return CURLE_OK;
        };
    }
    ~JobGuard() override { calls::answer<curl_global_init>() = nullptr; }

    std::vector<long> library_starts;
    std::string log_at_library_start;
    bool reads_console = true;

    void expect_entered(const char *marker) {
        console.clear();
        library_starts.clear();
        g_http_initialised = 0;
        EXPECT_EQ(start_processing(marker), 0u);
        EXPECT_EQ(logged(), url_line(kDefaultUrl));
        EXPECT_EQ(library_starts.size(), 1u);
        EXPECT_EQ(g_http_initialised, 1);
    }

    // Another run is active: nothing at all happens.
    void expect_refused(const char *marker) {
        world::write_file(kStatus + "KDUMPS_file", "https://other/");
        const OpenWatch opened(kStatus);
        EXPECT_EQ(start_processing(marker), 1u);
        EXPECT_EQ(logged(), "");
        EXPECT_THAT(opened.seen(), testing::IsEmpty());
        EXPECT_STREQ(KDUMPS_url, "");
        EXPECT_EQ(g_turn_lock_absent, 7);
        EXPECT_EQ(g_http_initialised, 0);
        EXPECT_THAT(library_starts, testing::IsEmpty());
    }
};

TEST_F(JobGuard, LeavesAnEmptyMarker) {
    const mode_t mask = umask(027);
    EXPECT_EQ(start_processing(kMarker), 0u);
    umask(mask);
    struct stat status;
    ASSERT_EQ(lstat(kMarker, &status), 0);
    EXPECT_EQ(status.st_mode, static_cast<mode_t>(S_IFREG | 0640));
    EXPECT_EQ(status.st_size, 0);
    EXPECT_EQ(world::list_files("/tmp"), std::vector<std::string>{kMarker});
}

TEST_F(JobGuard, LoadsAndLogsTheUrlThenStartsTheWholeHttpLibraryOnce) {
    world::write_file(kStatus + "KDUMPS_file", "https://cloud.example.com/%d");
    for (const std::string &url : {std::string("https://cloud.example.com/%d"), kDefaultUrl}) {
        library_starts.clear();
        g_http_initialised = 0;
        EXPECT_EQ(start_processing(kMarker), 0u);
        EXPECT_EQ(KDUMPS_url, url);
        EXPECT_EQ(library_starts, std::vector<long>{CURL_GLOBAL_ALL});
        EXPECT_EQ(g_http_initialised, 1);
        EXPECT_EQ(log_at_library_start, url_line(url));
        EXPECT_EQ(logged(), url_line(url));
        std::filesystem::remove(kMarker);
        std::filesystem::remove(kStatus + "KDUMPS_file");
        KDUMPS_url[0] = '\0';
    }
}

TEST_F(JobGuard, NotesWhetherTheTurnFileIsThere) {
    EXPECT_EQ(start_processing(kMarker), 0u);
    EXPECT_EQ(g_turn_lock_absent, 1);
    std::filesystem::remove(kMarker);
    world::write_file(kTurnFile, "");
    EXPECT_EQ(start_processing(kMarker), 0u);
    EXPECT_EQ(g_turn_lock_absent, 0);
    EXPECT_EQ(world::read_file(kTurnFile), "");
}

TEST_F(JobGuard, RefusesWhateverKindOfFileTheMarkerIs) {
    world::write_file("/tmp/target", "kept");
    const std::pair<const char *, std::function<void()>> kinds[] = {
        {"folder", [] { std::filesystem::create_directory(kMarker); }},
        {"link", [] { std::filesystem::create_symlink("/tmp/target", kMarker); }},
        {"dangling link", [] { std::filesystem::create_symlink("/tmp/nowhere", kMarker); }},
        {"fifo", [] { ASSERT_EQ(mkfifo(kMarker, 0600), 0); }},
        {"file", [] { world::write_file(kMarker, "anything"); }},
    };
    for (const auto &[kind, make] : kinds) {
        SCOPED_TRACE(kind);
        std::filesystem::remove(kMarker);
        make();
        expect_refused(kMarker);
    }
    EXPECT_EQ(world::read_file(kMarker), "anything");
    EXPECT_FALSE(world::exists("/tmp/nowhere"));
    EXPECT_EQ(world::read_file("/tmp/target"), "kept");
}

TEST_F(JobGuard, AnswersTheSecondRunOfAFamilyUntilTheMarkerIsGone) {
    const char *const other = "/tmp/kdump_process_watchdog";
    EXPECT_EQ(start_processing(kMarker), 0u);
    EXPECT_EQ(start_processing(kMarker), 1u);
    EXPECT_EQ(start_processing(other), 0u) << "another family";
    std::filesystem::remove(kMarker);
    EXPECT_EQ(start_processing(kMarker), 0u);
}

TEST_F(JobGuard, GoesOnWithoutAMarkerThatCannotBeCreated) {
    expect_entered(nullptr);
    expect_entered("/tmp/none/kdump_process_x");
    expect_entered(("/tmp/" + std::string(300, 'l')).c_str());
    world::write_file("/tmp/file", "");
    expect_entered("/tmp/file/kdump_process_x");
    std::filesystem::create_directory("/tmp/sealed");
    ASSERT_EQ(mount("none", "/tmp/sealed", "tmpfs", MS_RDONLY, nullptr), 0);
    expect_entered("/tmp/sealed/kdump_process_x");
    umount("/tmp/sealed");
    EXPECT_EQ(world::list_files("/tmp"), std::vector<std::string>{"/tmp/file"});
}

// The superuser's right to write everywhere is a capability that a child can give away.
bool give_up_the_right_to_write_anywhere() {
    __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct none[2] = {};
    return syscall(SYS_capset, &header, none) == 0;
}

TEST_F(JobGuard, GoesOnWithoutPermissionForAMarker) {
    std::filesystem::create_directory("/tmp/closed");
    std::filesystem::permissions("/tmp/closed", std::filesystem::perms{0555});
    reads_console = false;  // the console's reader stays in this process
    const int result = world::run_apart([] {
        if (!give_up_the_right_to_write_anywhere()) {
            return 99;
        }
        return static_cast<int>(start_processing("/tmp/closed/kdump_process_x"));
    });
    EXPECT_EQ(result, 0);
    EXPECT_EQ(logged(), url_line(kDefaultUrl));
    EXPECT_FALSE(world::exists("/tmp/closed/kdump_process_x"));
}

// Memory dumps share one, so do those of the configuration.
TEST_F(JobGuard, EachKindHasItsMarker) {
    for (const world::Kind &kind : world::kinds()) {
        const char *argument = kind.words.size() > 1 ? kind.words[1].c_str() : "-";
        const cloudagent::DumpKind *const found =
            cloudagent::find_dump_kind(kind.words[0].c_str(), argument);
        ASSERT_NE(found, nullptr) << kind.name;
        EXPECT_EQ(found->marker, kind.marker) << kind.name;
    }
    EXPECT_EQ(world::kind_named("RAM -f").marker, world::kind_named("FLASH").marker);
}

TEST_F(JobGuard, NothingStaysOpen) {
    const long before = open_descriptors();
    start_processing(kMarker);
    start_processing(kMarker);
    EXPECT_EQ(open_descriptors(), before);
}

TEST_F(JobGuard, OfSixteenProcessesExactlyOneWins) {
    reads_console = false;
    g_console_debug = 0;
    for (int round = 0; round < 10; ++round) {
        std::filesystem::remove(kMarker);
        const std::vector<int> results = world::run_together(
            16, [](int) { return static_cast<int>(start_processing(kMarker)); });
        EXPECT_EQ(std::count(results.begin(), results.end(), 0), 1);
        EXPECT_EQ(std::count(results.begin(), results.end(), 1), 15);
    }
}

}  // namespace
