#include <nlohmann/json.hpp>

#include "finished.h"
#include "testing/world_test.h"

namespace {

class LargeUpload : public world::WorldTest {};

// Runs kdump with a dump of `size` into a real nginx; the result is the program's peak memory.
double peak_kb_for(const std::string &size) {
    world::write_file("/tmp/large/large.json",
                      R"({"about": "a", "daemons": ["nginx"], "run": ["truncate -s )" + size +
                          R"( /mnt/data/iss_config/segmentrace.txt", "kdump segmentrace"]})");
    const Finished run = virtual_device(
        "run --check --scenario /tmp/large/large.json --json /tmp/large/record.json");
    const auto record =
        nlohmann::json::parse(world::read_file("/tmp/large/record.json"), nullptr, false);
    EXPECT_TRUE(record.is_object()) << run.output;
    EXPECT_EQ(record["stored"].size(), 1u) << run.output;
    EXPECT_TRUE(record["files_after"].find("/mnt/data/iss_config/segmentrace.txt") ==
                record["files_after"].end());
    return record["commands"][1]["peak_kb"];
}

TEST_F(LargeUpload, TakesNoMoreMemoryThanASmallOne) {
    const double small = peak_kb_for("1M");
    EXPECT_NEAR(peak_kb_for("1G"), small, 0.05 * small);
}

}  // namespace
