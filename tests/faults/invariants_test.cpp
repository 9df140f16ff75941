// The check that judges disturbed runs: what it must notice, and what it excepts.
#include "tests/faults/invariants.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>

namespace reliability {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using world::kind_named;

constexpr const char *kTrace = "/mnt/data/iss_config/segmentrace.txt";
constexpr const char *kUpgradeState = "/tmp/upgrade_fail_state_upload.txt";

int exit_status(int status) { return status << 8; }

class Invariants : public testing::Test {
  protected:
    Invariants() {
        observed.kind = &kind_named("segmentrace");
        observed.before = observed.after = {{kTrace, "a trace"}, {"/tmp/other", "o"}};
    }
    void of_kind(const std::string &name, const std::string &source) {
        observed.kind = &kind_named(name);
        observed.before = observed.after = {{source, "a dump"}};
    }
    std::vector<std::string> violations() { return check(observed).violations; }

    Observation observed;
};

TEST_F(Invariants, AllowARunThatChangesNothing) { EXPECT_THAT(violations(), IsEmpty()); }

TEST_F(Invariants, AllowADumpThatIsInTheCloud) {
    observed.after.erase(kTrace);
    observed.uploads = {{"a trace", 200}};
    EXPECT_THAT(violations(), IsEmpty());
}

TEST_F(Invariants, NoticeADumpThatIsNowhere) {
    observed.after.erase(kTrace);
    EXPECT_THAT(violations(), ElementsAre(std::string("lost ") + kTrace));
    EXPECT_EQ(check(observed).lost, 1);
}

TEST_F(Invariants, NoticeADumpThatTheCloudRefusedOrHasOtherwise) {
    observed.after.erase(kTrace);
    observed.uploads = {{"a trace", 403}, {"a tra", 200}};
    EXPECT_EQ(check(observed).lost, 1);
}

TEST_F(Invariants, ExceptACopyCutShortByACommandThatFailed) {
    observed.after.erase(kTrace);
    observed.uploads = {{"a tra", 200}};
    observed.disturbance.trouble = Trouble::call;
    observed.disturbance.caller = Caller::command;
    EXPECT_THAT(check(observed).exceptions, ElementsAre(testing::StrEq("copy-cut-short")));
    EXPECT_THAT(violations(), IsEmpty());
    observed.disturbance.caller = Caller::program;
    EXPECT_EQ(check(observed).lost, 1);
}

TEST_F(Invariants, ExceptADumpThatIsSentItselfOnceItsTransferIsComplete) {
    of_kind("upgradefailstate", kUpgradeState);
    observed.after.clear();
    EXPECT_EQ(check(observed).lost, 1);
    observed.uploads = {{"a dump", 403}};
    EXPECT_THAT(check(observed).exceptions, ElementsAre(testing::StrEq("sent-itself")));
    EXPECT_EQ(check(observed).lost, 0);
}

TEST_F(Invariants, NoticeAnExitStatusAndASignal) {
    observed.run.status = exit_status(1);
    EXPECT_THAT(violations(), ElementsAre("exit status 1"));
    observed.run.status = SIGSEGV;
    EXPECT_THAT(violations(), ElementsAre("signal 11"));
    observed.run.status = SIGKILL;
    observed.run.killed = true;
    EXPECT_THAT(violations(), IsEmpty());
}

TEST_F(Invariants, AllowOnlyKindsThatRetryWithoutEndToGiveUp) {
    observed.run.status = SIGTERM;
    observed.run.gave_up = true;
    EXPECT_THAT(violations(), IsEmpty());
    of_kind("RAM", "/tmp/cloud_dbg.txt");
    EXPECT_THAT(violations(), ElementsAre("signal 15"));
}

TEST_F(Invariants, NoticeARunThatDoesNotEndUnlessALibraryIsAtFault) {
    observed.run.overdue = true;
    observed.run.status = SIGKILL;
    EXPECT_THAT(violations(), ElementsAre("did not end"));
    observed.run.failed_frames = {"libcrypto.so.3 CRYPTO_malloc", "libssl.so.3 SSL_read",
                                  "libcurl.so.4 ?", "kdump ?"};
    EXPECT_THAT(violations(), IsEmpty());
    observed.run.failed_frames = {"libcurl.so.4 ?", "libssl.so.3 SSL_read", "kdump ?"};
    EXPECT_EQ(violations().size(), 1u);
    observed.run.overdue = false;
    observed.run.status = SIGSEGV;
    observed.run.fault_frames = {"libssl.so.3 SSL_read", "libcurl.so.4 ?"};
    EXPECT_EQ(violations().size(), 1u);
}

TEST_F(Invariants, NoticeAMarkerThatStaysUnlessItsRemovalFailed) {
    const std::string marker = observed.kind->marker;
    observed.after[marker] = "";
    EXPECT_THAT(violations(), ElementsAre("the marker stays"));
    observed.run.path = marker;
    EXPECT_THAT(violations(), IsEmpty());
    observed.run = {};
    observed.run.status = SIGKILL;
    observed.run.killed = true;
    EXPECT_THAT(violations(), IsEmpty());
}

TEST_F(Invariants, NoticeEveryOtherFile) {
    observed.after = {{kTrace, "a tr"}, {"/tmp/new", ""}};
    EXPECT_THAT(violations(),
                testing::UnorderedElementsAre(std::string("changed ") + kTrace,
                                              "removed /tmp/other", "created /tmp/new"));
    observed.after = observed.before;
    observed.after["/tmp/other"] = "changed";
    EXPECT_THAT(violations(), ElementsAre("changed /tmp/other"));
    observed.after = observed.before;
    observed.run.changed = {"/etc/passwd", "/tmp/segmentrace.txt", "/dev/console"};
    EXPECT_THAT(violations(), ElementsAre("touched /etc/passwd"));
}

TEST_F(Invariants, WantABusyRunToSaySoAndToTouchNothing) {
    observed.before[observed.kind->marker] = "";
    observed.after = observed.before;
    observed.console = "main 903 " + observed.kind->marker + " already processing, exit\n\n";
    EXPECT_THAT(check_busy(observed).violations, IsEmpty());
    observed.console.clear();
    observed.after.erase(observed.kind->marker);
    observed.uploads = {{"a trace", 200}};
    EXPECT_EQ(check_busy(observed).violations.size(), 3u);
}

TEST_F(Invariants, KnowWhatTheCloudShouldHave) {
    const Files files = observed.before;
    EXPECT_THAT(missing_in_cloud(*observed.kind, files, {}), ElementsAre(kTrace));
    EXPECT_THAT(missing_in_cloud(*observed.kind, files, {{"a trace", 200}}), IsEmpty());
    const std::string setting = "/mnt/data/iss_config/current_config/network.conf";
    const Files folder = {{setting, "eth0"}};
    const Kind &archive = kind_named("CONFIG ALL");
    EXPECT_THAT(missing_in_cloud(archive, folder, {}), ElementsAre(setting));
    EXPECT_THAT(missing_in_cloud(archive, folder, {{"..eth0..", 200}}), IsEmpty());
}

TEST(Disturbance, IsReadAsItIsWritten) {
    for (const char *text :
         {"none", "allocation,7", "allocations-from,30", "kill,program,12", "kill,command,3",
          "call,program,openat,ENOSPC,3", "call,command,write,less,1"})
        EXPECT_EQ(read_disturbance(text).text(), text);
    EXPECT_THROW(read_disturbance("call,program,openat"), std::runtime_error);
    EXPECT_THROW(read_disturbance("call,program,nothing,EIO,1"), std::runtime_error);
}

}  // namespace
}  // namespace reliability
