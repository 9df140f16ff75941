// Cuts the power after every write of a recorded session, and with writes lost that no flush had
// made safe: rebuilds the disk, repairs it as a device does at boot, and judges every file.
#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <optional>
#include <random>
#include <set>

#include "disk_log.h"
#include "session.h"
#include "testing/files.h"
#include "testing/shown_folders.h"
#include "testing/spawn.h"
#include "virtual_device/commands.h"

namespace fs = std::filesystem;

namespace power {
namespace {

using Blocks = std::map<uint64_t, std::string>;  // of the disk, by sector: what was written

constexpr size_t kSector = 512;

struct Tally {
    long states = 0, lost = 0, sent_twice = 0, values_lost = 0, emptied = 0, damaged = 0;
};

void apply(const DiskWrite &write, Blocks &blocks) {
    for (size_t at = 0; at < write.data.size(); at += kSector) {
        blocks[(write.place + at) / kSector] = write.data.substr(at, kSector);
    }
}

class Judge {
  public:
    explicit Judge(const Session &session) : session_(session) {}

    // What a cut leaves when the log had this length. States that were judged before do not count.
    void state(const Blocks &blocks, uint64_t length) {
        size_t hash = 0;
        for (const auto &[sector, data] : blocks) {
            hash = hash * 31 + (std::hash<std::string>()(data) ^ sector);
        }
        if (!seen_.insert({hash, places_passed(length)}).second) {
            return;
        }
        ++tally.states;
        if (!rebuild(blocks)) {
            ++tally.damaged;
            fmt::print("at {}: the file system is damaged\n", length);
            return;
        }
        judge_dumps(length);
        judge_settings(length);
    }

    Tally tally;

  private:
    // How many of the session's places lie before this one: the same disk may be judged by more.
    size_t places_passed(uint64_t length) const {
        size_t passed = 0;
        for (const DumpVersion &dump : session_.dumps) {
            passed += (dump.stored <= length ? 1 : 0) + (dump.kept_from <= length ? 1 : 0);
        }
        for (const Setting &setting : session_.settings) {
            passed += (setting.from <= length ? 1 : 0) + (setting.to <= length ? 1 : 0);
        }
        return passed;
    }

    static bool rebuild(const Blocks &blocks) {
        const std::string disk = "/run/world/power.disk", files = "/run/world/power.files";
        fs::remove_all(files);
        fs::create_directory(files);
        world::run(world::Command({"cp", "--sparse=always", kFirstDisk, disk}));
        std::fstream out(disk, std::ios::in | std::ios::out | std::ios::binary);
        for (const auto &[sector, data] : blocks) {
            out.seekp(static_cast<std::streamoff>(sector * kSector));
            out.write(data.data(), static_cast<std::streamsize>(data.size()));
        }
        out.close();
        constexpr int kRepaired = 1;
        return world::run(world::Command({"e2fsck", "-fp", disk}).quiet()).status <= kRepaired &&
               world::run(world::Command({"debugfs", "-R", "rdump / " + files, disk}).quiet())
                       .status == 0;
    }

    static std::optional<std::string> content(const std::string &path) {
        const std::string place = "/run/world/power.files" + path.substr(std::strlen("/mnt/data"));
        return world::exists(place) ? std::optional(world::read_file(place)) : std::nullopt;
    }

    void judge_dumps(uint64_t length) {
        for (const DumpVersion &dump : session_.dumps) {
            const bool is_there = content(dump.path) == dump.content;
            if (!is_there && dump.kept_from <= length && length < dump.stored) {
                ++tally.lost;
                fmt::print("at {}: lost {}\n", length, dump.path);
            }
            tally.sent_twice += is_there && dump.stored <= length ? 1 : 0;
        }
    }

    void judge_settings(uint64_t length) {
        std::map<std::string, std::set<std::string>> allowed;
        std::set<std::string> in_call;
        for (const Setting &setting : session_.settings) {
            if (setting.to <= length) {
                allowed[setting.path] = {setting.text};
            } else if (setting.from <= length) {
                allowed[setting.path].insert(setting.text);
                in_call.insert(setting.path);
            }
        }
        for (const auto &[path, texts] : allowed) {
            const std::optional<std::string> found = content(path);
            const bool is_first = in_call.count(path) != 0 && texts.size() == 1;
            if ((found && texts.count(*found) != 0) || (!found && is_first)) {
                continue;
            }
            if (found == "" && in_call.count(path) != 0) {
                ++tally.emptied;
                continue;
            }
            ++tally.values_lost;
            fmt::print("at {}: {} holds \"{}\"\n", length, path, found.value_or("nothing"));
        }
    }

    const Session &session_;
    std::set<std::pair<size_t, size_t>> seen_;
};

// Every disk that a cut can leave: all writes up to a place; of those since the last flush one, or
// a random half, is missing.
void cut_everywhere(const std::vector<DiskWrite> &writes, size_t step, Judge &judge) {
    Blocks safe;
    std::vector<const DiskWrite *> unsafe;
    std::mt19937 random(1);
    size_t number = 0;
    const auto cut = [&](const std::function<bool(size_t)> &is_missing, uint64_t length) {
        if (number++ % step != 0) {
            return;
        }
        Blocks blocks = safe;
        for (size_t at = 0; at < unsafe.size(); ++at) {
            if (!is_missing(at)) {
                apply(*unsafe[at], blocks);
            }
        }
        judge.state(blocks, length);
    };
    for (const DiskWrite &write : writes) {
        if (write.flushes) {
            for (const DiskWrite *earlier : unsafe) {
                apply(*earlier, safe);
            }
            unsafe.clear();
        }
        if (write.data.empty()) {
            continue;
        }
        unsafe.push_back(&write);
        cut([](size_t) { return false; }, write.length);
        for (size_t missing = 0; missing + 1 < unsafe.size(); ++missing) {
            cut([&](size_t at) { return at == missing; }, write.length);
        }
        cut([&](size_t) { return random() % 2 == 0; }, write.length);
    }
}

int run(const std::string &kdump, const std::string &writer, bool sample, bool must_be_caught) {
    const std::string absolute = fs::absolute(writer).string();
    const std::string program = world::enter_world(kdump, {});
    const Session session = record_session(program, world::inside(absolute), sample ? 1 : 12);
    const std::vector<DiskWrite> writes = read_disk_log(kDiskLog);
    Judge judge(session);
    cut_everywhere(writes, sample ? 8 : 1, judge);
    const Tally &tally = judge.tally;
    fmt::print(
        "{} writes, {} states: {} dumps lost, {} sent twice, {} values lost, {} files emptied, "
        "{} file systems damaged\n",
        writes.size(), tally.states, tally.lost, tally.sent_twice, tally.values_lost, tally.emptied,
        tally.damaged);
    const bool stored =
        std::all_of(session.dumps.begin(), session.dumps.end(),
                    [](const DumpVersion &dump) { return dump.stored != UINT64_MAX; });
    const long faults = tally.lost + tally.values_lost;
    return stored && tally.states > 0 && tally.damaged == 0 && (faults > 0) == must_be_caught ? 0
                                                                                              : 1;
}

}  // namespace
}  // namespace power

int main(int argc, char **argv) {
    std::string kdump = KDUMP_PROGRAM;
    std::string writer = STATE_WRITER;
    bool sample = false;
    bool must_be_caught = false;
    CLI::App app("Cuts the power of a machine at every write of its disk.");
    app.add_option("--kdump", kdump, "another kdump");
    app.add_option("--state-writer", writer, "another writer of settings");
    app.add_flag("--sample", sample, "one round, some of the cuts");
    app.add_flag("--must-be-caught", must_be_caught, "fail when nothing is lost");
    CLI11_PARSE(app, argc, argv);
    return power::run(kdump, writer, sample, must_be_caught);
}
