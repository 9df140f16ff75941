// The upload program: alive, stalled, gone, or somebody else by now.
#include <filesystem>

#include "covering_mount.h"
#include "firmware_watch_test.h"

namespace {

std::string line(const std::string &before, int pid, const std::string &after) {
    return before + std::to_string(pid) + after;
}

class FirmwareProcess : public FirmwareWatchTest {
  protected:
    static std::string found(int pid) { return line("data.cgi pid ", pid, " \n\n"); }
    static std::string uploading(int pid) {
        return line("SN_Check_FW_upload_status 1668 data.cgi ", pid, " is uploading image\n");
    }
    static std::string gone(int pid) {
        return line("SN_Check_FW_upload_status 1686 data.cgi ", pid, " is not exist\n");
    }
    static std::string stalled(int pid, const char *outcome) {
        return line("data.cgi pid ", pid, " not running kill\n\n") +
               line("data.cgi pid ", pid, std::string(" not running kill ") + outcome + "\n\n");
    }
    static std::vector<std::pair<int, int>> signal_nine(int pid) { return {{pid, SIGKILL}}; }
};

TEST_F(FirmwareProcess, IsUploadingUnlessItStallsOnPlainHttp) {
    const struct {
        const char *tags, *logged;
        State state;
    } rows[] = {
        {"[port: 80]", "UPLOAD CGI Protocol HTTP\n\n", State::running},
        {"[port: 443]", "UPLOAD CGI Protocol HTTPS\n\n", State::running},
        {"[port: 443]", "UPLOAD CGI Protocol HTTPS\n\n", State::sleeping},
        {"[port: 443]", "UPLOAD CGI Protocol HTTPS\n\n", State::stopped},
        {"[port: 443]", "UPLOAD CGI Protocol HTTPS\n\n", State::ended},
        {"[port: 80][port: 443]", "UPLOAD CGI Protocol HTTPS\n\n", State::sleeping},
        {"[port: 8080]", "", State::sleeping},
        {"", "", State::sleeping},
        {"", "", State::stopped},
        {"", "", State::running},
    };
    for (const auto &row : rows) {
        const UploadProgram program("data.cgi", row.state);
        const int pid = program.pid();
        const std::string what = row.tags + std::to_string(static_cast<int>(row.state));
        EXPECT_EQ(watch(marker_of(pid, row.tags)), 1u) << what;
        EXPECT_EQ(left(), kBoth) << what;
        EXPECT_EQ(logged(), row.logged + found(pid) + uploading(pid)) << what;
    }
    EXPECT_TRUE(sent_signals.empty());
}

TEST_F(FirmwareProcess, StalledOnPlainHttpIsKilled) {
    for (const State state : {State::sleeping, State::stopped, State::ended}) {
        UploadProgram program("data.cgi", state);
        const int pid = program.pid();
        EXPECT_EQ(watch(marker_of(pid, "[port: 80] ")), 0u);
        EXPECT_TRUE(program.was_killed());
        EXPECT_EQ(sent_signals, signal_nine(pid));
        EXPECT_EQ(left(), "");
        EXPECT_EQ(logged(), "UPLOAD CGI Protocol HTTP\n\n" + found(pid) + stalled(pid, "sucess"));
    }
}

TEST_F(FirmwareProcess, FailedKillIsStillAnUpload) {
    const UploadProgram program;
    const int pid = program.pid();
    refuses_signals = true;
    EXPECT_EQ(watch(marker_of(pid, "[port: 80] ")), 1u);
    EXPECT_EQ(sent_signals, signal_nine(pid));
    EXPECT_EQ(left(), kBoth);
    EXPECT_EQ(logged(), "UPLOAD CGI Protocol HTTP\n\n" + found(pid) + stalled(pid, "fail"));
}

TEST_F(FirmwareProcess, GoneProgramLosesBothFiles) {
    UploadProgram program;
    program.end();
    const int pid = program.pid();
    for (const char *tags : {"", "[port: 80] ", "[port: 443] "}) {
        EXPECT_EQ(watch(marker_of(pid, tags)), 0u) << tags;
        EXPECT_EQ(left(), "") << tags;
        EXPECT_NE(logged().find(found(pid) + gone(pid)), std::string::npos) << tags;
    }
    world::write_file(kMarker, marker_of(pid));
    EXPECT_EQ(SN_Check_FW_upload_status(), 0u) << "without a progress file";
    EXPECT_EQ(left(), "");
}

TEST_F(FirmwareProcess, ReusedIdLeavesBothFiles) {
    for (const char *name : {"httpd", "data_cgi", "data.cg", "Data.cgi", "running"}) {
        const UploadProgram other(name);
        EXPECT_EQ(watch(marker_of(other.pid(), "[port: 80] ")), 0u) << name;
        EXPECT_EQ(left(), kBoth) << name;
        EXPECT_EQ(logged(), "UPLOAD CGI Protocol HTTP\n\n" + found(other.pid())) << name;
    }
    EXPECT_TRUE(sent_signals.empty());
}

TEST_F(FirmwareProcess, NameIsFoundAnywhereInItsLine) {
    for (const char *name : {"data.cgi.old", "my-data.cgi"}) {
        const UploadProgram program(name);
        EXPECT_EQ(watch(marker_of(program.pid())), 1u) << name;
    }
}

// The test's own files in place of /proc/<id> of a live process.
class FirmwareProcFolder : public FirmwareProcess {
  protected:
    FirmwareProcFolder() {
        std::filesystem::remove_all(kFolder);
        std::filesystem::create_directories(kFolder);
    }

    uint32_t watch_covered(const std::string &tags = "") {
        const CoveringMount cover(kFolder, "/proc/" + std::to_string(program.pid()));
        return watch(marker_of(program.pid(), tags));
    }

    static constexpr const char *kFolder = "/run/world/proc_folder";
    static constexpr const char *kStatus = "/run/world/proc_folder/status";
    UploadProgram program;
};

TEST_F(FirmwareProcFolder, WithoutReadableStatusLosesBothFiles) {
    const int pid = program.pid();
    for (const bool exists : {false, true}) {
        if (exists) {
            make_unopenable_file(kStatus);
        }
        EXPECT_EQ(watch_covered(), 0u);
        EXPECT_EQ(left(), "");
        EXPECT_EQ(logged(),
                  found(pid) + line("/proc/", pid,
                                    exists ? "/status open fail\n\n" : "/status not exist\n\n"));
    }
}

TEST_F(FirmwareProcFolder, StatusIsReadToItsEndInPiecesOf255) {
    const std::string name = "Name:\tdata.cgi\n";
    const struct {
        const char *what;
        std::string status;
        uint32_t result;
        const char *left;
    } rows[] = {
        {"no state", name, 1, kBoth},
        {"running", name + "State:\tR (running)\n", 1, kBoth},
        {"name last", "State:\tR (running)\nUmask:\t0022\n" + name, 1, kBoth},
        {"no line end", "State:\tR (running)\nName:data.cgi", 1, kBoth},
        {"name and program apart", "Name:\nUmask:\tdata.cgi\n", 0, kBoth},
        {"other name", "Name:\thttpd\nState:\tS (sleeping)\n", 0, kBoth},
        {"empty", "", 0, kBoth},
        {"name split by the buffer", std::string(250, 'x') + name, 0, kBoth},
        {"name behind the first piece", std::string(255, 'x') + name, 1, kBoth},
        {"state split by the buffer", name + std::string(252, 'x') + "State: D\n", 1, kBoth},
    };
    for (const auto &row : rows) {
        world::write_file(kStatus, row.status);
        EXPECT_EQ(watch_covered("[port: 80]"), row.result) << row.what;
        EXPECT_EQ(left(), row.left) << row.what;
    }
    EXPECT_TRUE(sent_signals.empty());
}

TEST_F(FirmwareProcFolder, AnyStateLineThatIsNotRunningStalls) {
    for (const char *states : {"State:\tD (disk sleep)\n", "State:\tR (Running)\n", "State:\n",
                               "State:\tR (running)\nState:\tX\n", "xState:\n"}) {
        world::write_file(kStatus, "Name:\tdata.cgi\n" + std::string(states));
        refuses_signals = true;
        EXPECT_EQ(watch_covered("[port: 80]"), 1u) << states;
        EXPECT_NE(logged().find(stalled(program.pid(), "fail")), std::string::npos) << states;
        EXPECT_EQ(watch_covered("[port: 443]"), 1u) << states;
        EXPECT_NE(logged().find(uploading(program.pid())), std::string::npos) << states;
    }
}

}  // namespace
