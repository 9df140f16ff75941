#include <gmock/gmock.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <thread>

#include "finished.h"
#include "testing/daemon.h"
#include "testing/named_row.h"
#include "testing/shown_folders.h"
#include "testing/world_test.h"

namespace {

using testing::HasSubstr;

int process_count() {
    int count = 0;
    for (const auto &entry : std::filesystem::directory_iterator("/proc"))
        count += std::isdigit(static_cast<unsigned char>(entry.path().filename().c_str()[0])) != 0;
    return count;
}

template <class Condition>
bool eventually(Condition condition) {
    for (int tries = 0; tries < 1000; ++tries) {
        if (condition())
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

class VirtualDevice : public world::WorldTest {};

TEST_F(VirtualDevice, TheReadmeShowsWhatTheDemoPrints) {
    const std::string readme = world::read_file(world::inside(PROJECT_README));
    const size_t from = readme.find("```\nOn the virtual device: ") + 4;
    const std::string shown = readme.substr(from, readme.find("```", from) - from);
    const Finished run = virtual_device("run --scenario segmentrace");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(world::without_stamps(shown), world::without_stamps(run.output));
}

struct Call : NamedRow {
    std::string arguments;
    int status;
    std::vector<std::string> shown;
};

class VirtualDeviceCall : public VirtualDevice, public testing::WithParamInterface<Call> {};

TEST_P(VirtualDeviceCall, EndsWithItsStatusAndShows) {
    world::write_file("/tmp/odd/odd.json", R"({"about": "a", "run": ["kdump coredump"]})");
    world::write_file("/tmp/odd/odd.expected",
                      "== run: kdump coredump\nexit 0\n== console\nmain 7\n");
    world::write_file("/tmp/typed", "kdump coredump\npwd\nexit\n");
    const Finished run = virtual_device(GetParam().arguments);
    EXPECT_EQ(run.status, GetParam().status);
    for (const std::string &part : GetParam().shown) {
        EXPECT_THAT(run.output, HasSubstr(part));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Of, VirtualDeviceCall,
    testing::Values(
        Call{"ADifferenceFails",
             "run --check --scenario /tmp/odd/odd.json",
             1,
             {"-main 7\n", "+main 1491\n"}},
        Call{"ACommandsOutputAndStatus",
             "run -- sh -c 'echo here; cat /proc/sys/kernel/hostname; exit 7'",
             7,
             {"here\ndevice\n"}},
        Call{"TheList", "scenarios", 0, {"upload-drops-midway"}},
        Call{"NoScenario", "run --scenario nonsense", 1, {"virtual_device scenarios"}},
        Call{"TheShellsGreeting", "shell </dev/null", 0, {"virtual-device"}},
        Call{"TheShellKnowsTheProgram", "shell </tmp/typed", 0, {"main 1491", "/run/device"}},
        Call{"NoCommand", "", 106, {}}, Call{"Help", "--help", 0, {"scenarios"}},
        Call{"HelpOfRun", "run --help", 0, {}}, Call{"HelpOfShell", "shell --help", 0, {}},
        Call{"HelpOfServe", "serve --help", 0, {}},
        Call{"HelpOfScenarios", "scenarios --help", 0, {}}),
    RowName());

TEST_F(VirtualDevice, WritesTheWholeRecord) {
    ASSERT_EQ(virtual_device("run --scenario RAM --json /tmp/record.json").status, 0);
    const auto record = nlohmann::json::parse(world::read_file("/tmp/record.json"));
    EXPECT_EQ(record["requests"].size(), 4u);
    EXPECT_EQ(record["requests"][3]["body_sha256"], record["stored"][0]["sha256"]);
    EXPECT_GT(record["requests"][1]["ended"], record["requests"][1]["started"]);
    EXPECT_TRUE(record["files_before"].contains("/tmp/cloud_dbg.txt"));
    EXPECT_FALSE(record["files_after"].contains("/tmp/cloud_dbg.txt"));
    EXPECT_EQ(record["local_service"]["/api/system/settings/ledblink"]["systemLED"], "solidLight");
}

TEST_F(VirtualDevice, TheKernelSeesOneWriteForEachLine) {
    // Console lines come in between, so each call arrives in one write.
    const Finished run = virtual_device(
        "run -- sh -c 'strace -qq -f -s 9999 -e trace=openat,write -e write=none -o /tmp/calls "
        "kdump RAM; grep --line-buffered -E \"/dev/console| write.2, \" /tmp/calls'");
    std::istringstream calls(run.output);
    int consoles = 0;
    int traced = 0;
    for (std::string call; std::getline(calls, call);) {
        if (call.find("openat(AT_FDCWD, \"/dev/console\"") != std::string::npos) {
            EXPECT_THAT(call, HasSubstr(", O_WRONLY|O_NOCTTY|O_CLOEXEC) ="));
            ++consoles;
        }
        if (call.find(" write(2, ") != std::string::npos) {
            EXPECT_THAT(call, HasSubstr("\\n\", "));
            ++traced;
        }
    }
    EXPECT_GT(consoles, 10) << run.output;
    EXPECT_GT(traced, 10) << run.output;
}

TEST_F(VirtualDevice, TwoDoNotSeeEachOther) {
    const std::string one =
        " run -- sh -c 'echo mine >/tmp/mark; sleep 0.5; cat /tmp/mark; "
        "curl --version >/dev/null; ls /tmp/theirs 2>/dev/null; kdump segmentrace'";
    const std::string other =
        " run -- sh -c 'echo other >/tmp/mark; echo x >/tmp/theirs; sleep 0.5; "
        "cat /tmp/mark; kdump segmentrace'";
    Finished second;
    std::thread beside([&] { second = virtual_device(other); });
    const Finished first = virtual_device(one);
    beside.join();
    EXPECT_THAT(first.output, HasSubstr("mine\n"));
    EXPECT_EQ(first.output.find("/tmp/theirs\n"), std::string::npos) << first.output;
    EXPECT_THAT(second.output, HasSubstr("other\n"));
    for (const std::string &output : {first.output, second.output})
        EXPECT_THAT(output, HasSubstr("equal"));
}

// Started from a folder that the device has one of its own of.
TEST_F(VirtualDevice, KeepsItsOwnFoldersApartFromTheCallers) {
    world::write_file(std::string(world::kDeviceDir) + "/mine", "x");
    world::write_file("/tmp/own/mine", "y");
    EXPECT_EQ(virtual_device("run -- test -e mine").status, 1);
    EXPECT_EQ(virtual_device("run -- cat /tmp/own/mine").status, 1);
    std::filesystem::current_path("/tmp/own");
    EXPECT_EQ(virtual_device("run -- cat /tmp/own/mine").status, 0) << "the caller's folder";
    world::write_file("/tmp/own/a program", "#!/bin/sh\nexit 7\n");
    std::filesystem::permissions("/tmp/own/a program", std::filesystem::perms(0755));
    EXPECT_EQ(virtual_device("run -- './a program'").status, 7);
    EXPECT_NE(virtual_device("run --kdump './a program' -- kdump RAM").output.find("status 7"),
              std::string::npos);
    std::filesystem::current_path(world::kDeviceDir);
}

world::Daemon start_serving() {
    world::Ready ready;
    ready.mark = "The device is up";
    return {world::Command({VIRTUAL_DEVICE, "serve"}), ready};
}

TEST_F(VirtualDevice, KilledItLeavesNothing) {
    const std::string mounts = world::read_file("/proc/self/mountinfo");
    const int processes = process_count();
    world::Daemon device = start_serving();
    EXPECT_GE(process_count(), processes + 3);
    device.end(SIGKILL);
    EXPECT_TRUE(eventually([&] { return process_count() == processes; }));
    EXPECT_EQ(world::read_file("/proc/self/mountinfo"), mounts);
    EXPECT_TRUE(world::list_files("/tmp").empty());
}

TEST_F(VirtualDevice, ServesUntilInterrupted) {
    world::Daemon device = start_serving();
    EXPECT_EQ(device.end(SIGINT).status, 0);
    EXPECT_THAT(device.output(), HasSubstr("Requests, in order"));
}

TEST_F(VirtualDevice, AFleetDeliversAfterAnOutage) {
    const Finished run = virtual_device(
        "fleet --devices 6 --spread 1 --outage 3 --json /tmp/fleet.json --plot /tmp/fleet.gp");
    EXPECT_EQ(run.status, 0) << run.output;
    const auto record = nlohmann::json::parse(world::read_file("/tmp/fleet.json"));
    EXPECT_EQ(record["stored"], 6);
    EXPECT_EQ(record["dumps_left"], 0);
    std::map<std::string, int> seen;
    for (const auto &request : record["requests"])
        ++seen[request["service"].get<std::string>() + request["mishap"].get<std::string>()];
    EXPECT_EQ(seen["tfaoutage"], 6) << "each device met the outage once";
    EXPECT_EQ(seen["tfa"], 6);
    EXPECT_EQ(seen["store"], 6);
    EXPECT_EQ(std::system("gnuplot /tmp/fleet.gp >/tmp/fleet.svg"), 0);
    EXPECT_NE(world::read_file("/tmp/fleet.svg").find("<svg"), std::string::npos);
}

// As a container's filter does: unshare() is not permitted.
void forbid_namespaces() {
    struct sock_filter refuse[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(struct seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_unshare, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EPERM),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const struct sock_fprog program = {4, refuse};
    prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    if (prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) != 0)
        _exit(126);
}

TEST_F(VirtualDevice, SaysWhatForbidsNamespaces) {
    const Finished run = world::run_and_read(world::Command({VIRTUAL_DEVICE, "run", "--", "true"})
                                                 .redirect(STDERR_FILENO, STDOUT_FILENO)
                                                 .before(forbid_namespaces));
    EXPECT_EQ(run.status, 1);
    for (const char *setting : {"user.max_user_namespaces", "kernel.unprivileged_userns_clone",
                                "kernel.apparmor_restrict_unprivileged_userns", "--privileged"})
        EXPECT_THAT(run.output, HasSubstr(setting));
}

}  // namespace
