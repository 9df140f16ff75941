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
    const world::Outcome outcome = run(GetParam().command, "", [] {
        link_to_victim(GetParam().path);
        give_away(GetParam().path);
    });
    EXPECT_EQ(stored(outcome), kVictimContent);
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

class ForeignFile : public SharedTmp {
  protected:
    static world::Outcome run_beside(const std::string &path, const std::string &command) {
        return run(command, "", [&] {
            world::write_file(path, "");
            give_away(path);
        });
    }
};

TEST_F(ForeignFile, RebootsTheDevice) {
    EXPECT_EQ(run_beside("/tmp/upgrade_finish", "kdump debugRamLog").reboots, 1);
}

TEST_F(ForeignFile, KeepsAKindFromRunning) {
    const world::Outcome outcome =
        run_beside("/tmp/kdump_process_segmentrace", "kdump segmentrace");
    EXPECT_THAT(outcome.exchanges, testing::IsEmpty());
    EXPECT_TRUE(world::exists("/mnt/data/iss_config/segmentrace.txt"));
}

TEST_F(ForeignFile, NamesTheServerThatIsAsked) {
    const std::string url = "https://uploads.example.com/elsewhere";
    const world::Outcome outcome =
        run("kdump RAM", "", [&] { world::write_file("/tmp/app/cloud_tmp/KDUMPS_file", url); });
    EXPECT_EQ(outcome.exchanges.at(1).url, url);
}

// A link at a marker's place is a marker, wherever it leads.
TEST_F(ForeignFile, IsNotFollowedAsAMarker) {
    for (const char *target : {kVictim, "/mnt/data/nowhere"}) {
        world::reset();
        world::write_file(kVictim, kVictimContent);
        const world::Outcome outcome = run("kdump segmentrace", "", [&] {
            std::filesystem::create_symlink(target, "/tmp/kdump_process_segmentrace");
        });
        EXPECT_THAT(outcome.exchanges, testing::IsEmpty());
        EXPECT_TRUE(world::exists("/tmp/kdump_process_segmentrace"));
        EXPECT_FALSE(world::exists("/mnt/data/nowhere"));
        EXPECT_EQ(victim(), kVictimContent);
    }
}

}  // namespace
