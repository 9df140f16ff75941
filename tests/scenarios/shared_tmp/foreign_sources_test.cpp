// Files that belong in /tmp by design are trusted, whoever made them.
#include "shared_tmp.h"
#include "testing/kinds.h"
#include "testing/named_row.h"

namespace {

struct Source : NamedRow {
    std::string command;
    std::string path;
};

class ForeignSource : public SharedTmp, public testing::WithParamInterface<Source> {};

// The file that a link leads to is sent; the link is removed, the file stays.
TEST_P(ForeignSource, IsSentWhereverItLeads) {
    world::DeviceRun device(scenario("{\"about\": \"a\"}"), setup());
    link_to_victim(GetParam().path);
    give_away(GetParam().path);
    device.run(GetParam().command);
    EXPECT_EQ(stored(device.outcome()), kVictimContent);
    EXPECT_FALSE(world::exists(GetParam().path));
    EXPECT_EQ(victim(), kVictimContent);
}

std::vector<Source> each_source_in_tmp() {
    std::vector<Source> rows;
    for (const world::Kind &kind : world::kinds())
        for (const world::Dump &dump : kind.dumps)
            if (!kind.is_variant && dump.source.rfind("/tmp/", 0) == 0)
                rows.push_back({{kind.name}, "kdump " + kind.name, dump.source});
    return rows;
}

INSTANTIATE_TEST_SUITE_P(Of, ForeignSource, testing::ValuesIn(each_source_in_tmp()), RowName());

using ForeignFile = SharedTmp;

TEST_F(ForeignFile, RebootsTheDevice) {
    world::DeviceRun device(scenario("{\"about\": \"a\"}"), setup());
    world::write_file("/tmp/upgrade_finish", "");
    give_away("/tmp/upgrade_finish");
    device.run("kdump debugRamLog");
    EXPECT_EQ(device.outcome().reboots, 1);
}

TEST_F(ForeignFile, KeepsAKindFromRunning) {
    world::DeviceRun device(scenario("{\"about\": \"a\"}"), setup());
    world::write_file("/tmp/kdump_process_segmentrace", "");
    give_away("/tmp/kdump_process_segmentrace");
    device.run("kdump segmentrace");
    const world::Outcome outcome = device.outcome();
    EXPECT_THAT(outcome.exchanges, testing::IsEmpty());
    EXPECT_TRUE(world::exists("/mnt/data/iss_config/segmentrace.txt"));
}

TEST_F(ForeignFile, NamesTheServerThatIsAsked) {
    world::DeviceRun device(scenario("{\"about\": \"a\"}"), setup());
    world::write_file("/tmp/app/cloud_tmp/KDUMPS_file", "https://uploads.example.com/elsewhere");
    device.run("kdump RAM");
    EXPECT_EQ(device.outcome().exchanges.at(1).url, "https://uploads.example.com/elsewhere");
}

// A link at a marker's place is a marker, wherever it leads.
TEST_F(ForeignFile, IsNotFollowedAsAMarker) {
    for (const char *target : {kVictim, "/mnt/data/nowhere"}) {
        world::reset();
        world::write_file(kVictim, kVictimContent);
        world::DeviceRun device(scenario("{\"about\": \"a\"}"), setup());
        std::filesystem::create_symlink(target, "/tmp/kdump_process_segmentrace");
        device.run("kdump segmentrace");
        EXPECT_THAT(device.outcome().exchanges, testing::IsEmpty());
        EXPECT_TRUE(world::exists("/tmp/kdump_process_segmentrace"));
        EXPECT_FALSE(world::exists("/mnt/data/nowhere"));
        EXPECT_EQ(victim(), kVictimContent);
    }
}

}  // namespace
