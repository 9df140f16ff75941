// Staged copies: another user's file in their place is removed before the copy is made.
#include "shared_tmp.h"
#include "testing/kinds.h"
#include "testing/named_row.h"
#include "testing/spawn.h"

namespace {

struct Copy : NamedRow {
    std::string command;
    std::string source;  // empty: an archive is made
    std::string copy;
    bool stays = false;
};

class ForeignCopy : public SharedTmp, public testing::WithParamInterface<Copy> {
  protected:
    std::string log_of_undisturbed_run() {
        const std::string log = run(GetParam().command).commands.front().console;
        world::reset();
        world::write_file(kVictim, kVictimContent);
        return world::without_stamps(log);
    }

    // Runs the kind with somebody else's file in the copy's place.
    void expect_delivered(const std::string &log) {
        const world::Outcome outcome = run(GetParam().command);
        EXPECT_EQ(outcome.commands.front().exit_status, 0);
        EXPECT_EQ(world::without_stamps(outcome.commands.front().console), log);
        EXPECT_EQ(victim(), kVictimContent);
        if (GetParam().stays) {
            EXPECT_EQ(owner_of(GetParam().copy), geteuid());
            EXPECT_EQ(world::read_file(GetParam().copy), world::read_file(GetParam().source));
        } else if (GetParam().source.empty()) {
            EXPECT_THAT(world::tar_members(outcome.stored.at(0).path),
                        testing::Contains(testing::HasSubstr("network.conf")));
        } else {
            EXPECT_EQ(stored(outcome), world::seeded_files().at(GetParam().source));
        }
    }
};

TEST_P(ForeignCopy, IsNoWayOutOfTmp) {
    const std::string log = log_of_undisturbed_run();
    link_to_victim(GetParam().copy);
    NEEDS_ANOTHER_USER(give_away(GetParam().copy));
    expect_delivered(log);
}

TEST_P(ForeignCopy, DoesNotGetTheDump) {
    const std::string log = log_of_undisturbed_run();
    world::write_file(GetParam().copy, "mine");
    const int kept = open(GetParam().copy.c_str(), O_RDONLY | O_CLOEXEC);
    NEEDS_ANOTHER_USER(give_away(GetParam().copy));
    expect_delivered(log);
    char content[8] = "";
    EXPECT_EQ(pread(kept, content, sizeof content, 0), 4);
    close(kept);
}

TEST_P(ForeignCopy, DoesNotHoldTheRunUp) {
    const std::string log = log_of_undisturbed_run();
    ASSERT_EQ(mkfifo(GetParam().copy.c_str(), 0666), 0);
    NEEDS_ANOTHER_USER(give_away(GetParam().copy));
    expect_delivered(log);
}

std::vector<Copy> each_copy() {
    std::vector<Copy> rows;
    for (const world::Kind &kind : world::kinds()) {
        const std::string command = "kdump " + kind.name;
        if (!kind.dumps.empty() && !kind.dumps[0].staged.empty())
            rows.push_back({{kind.name}, command, kind.dumps[0].source, kind.dumps[0].staged});
        else if (kind.sends_archive)
            rows.push_back({{kind.name}, command, "", kind.copied});
        else if (!kind.copied.empty())
            rows.push_back({{kind.name},
                            command,
                            "/mnt/data/iss_config/current_config/" + kind.words[1],
                            kind.copied,
                            /*stays=*/true});
    }
    return rows;
}

INSTANTIATE_TEST_SUITE_P(Of, ForeignCopy, testing::ValuesIn(each_copy()), RowName());

using OwnCopy = SharedTmp;

// Whoever has a small /tmp may put a link there.
TEST_F(OwnCopy, LiesWhereALinkOfThisUserLeads) {
    link_to_victim("/tmp/segmentrace.txt");
    const world::Outcome outcome = run("kdump segmentrace");
    EXPECT_EQ(stored(outcome),
              world::seeded_files().at(world::kind_named("segmentrace").dumps[0].source));
    EXPECT_EQ(victim(), stored(outcome));
    EXPECT_FALSE(world::exists("/tmp/segmentrace.txt"));
}

// Nobody can write to a program that runs: "cp -f" replaces it, "cp" lets it be.
TEST_F(OwnCopy, ReplacesWhatCannotBeWrittenWhereTheCommandForcesIt) {
    for (const Copy &row : each_copy()) {
        const bool forced =
            row.name != "segmentrace" && row.name != "dblock" && row.name != "connfaillog";
        if (row.source.empty())
            continue;
        world::reset();
        std::filesystem::copy("/bin/sleep", row.copy);
        const world::Child running = world::spawn(world::Command({row.copy, "99"}));
        world::DeviceRun device = device_with("");
        const std::string dump = world::read_file(row.source);
        device.run(row.command);
        const std::string copied =
            row.stays ? world::read_file(row.copy) : stored(device.outcome());
        EXPECT_EQ(copied == dump, forced) << row.name;
    }
}

TEST_F(OwnCopy, OfAnEarlierRunIsReplaced) {
    world::write_file("/tmp/segmentrace.txt", "of an earlier run");
    EXPECT_EQ(stored(run("kdump segmentrace")),
              world::seeded_files().at(world::kind_named("segmentrace").dumps[0].source));
}

// The upload announces the folder's size and has nothing to send.
TEST_F(OwnCopy, WaitsWhereAFolderIs) {
    ASSERT_EQ(mkdir("/tmp/cloud_ram_dbg.txt", 0755), 0);
    EXPECT_NE(run("timeout --signal=KILL 2 kdump RAM").commands.front().exit_status, 0);
    const std::string dump = world::seeded_files().at("/tmp/cloud_dbg.txt");
    EXPECT_EQ(world::read_file("/tmp/cloud_dbg.txt"), dump);
    EXPECT_EQ(world::read_file("/tmp/cloud_ram_dbg.txt/cloud_dbg.txt"), dump);
}

// Only a name in /tmp itself is cleared, never a place that the name's slashes lead to.
TEST_F(OwnCopy, IsNotClearedOutsideOfTmp) {
    NEEDS_ANOTHER_USER(give_away(kVictim));
    run("kdump CONFIG ../mnt/data/victim");
    EXPECT_EQ(victim(), kVictimContent);
    EXPECT_EQ(owner_of(kVictim), kSomebodyElse);
}

}  // namespace
