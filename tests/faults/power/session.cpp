#include "session.h"

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <stdexcept>

#include "testing/files.h"
#include "testing/kinds.h"
#include "testing/paths.h"
#include "testing/sha256.h"
#include "testing/shown_folders.h"
#include "virtual_device/commands.h"
#include "virtual_device/device_run.h"

namespace power {
namespace {

constexpr const char *kWriter = "/tmp/state_writer";

uint64_t log_length() {
    std::error_code none;
    const auto length = std::filesystem::file_size(kDiskLog, none);
    return none ? 0 : length;
}

class Recorder {
  public:
    Recorder(const std::string &kdump, const std::string &state_writer) {
        world::Scenario scenario;
        scenario.files[kWriter] = world::read_file(state_writer);
        scenario.cloud_settings.on_stored = [this] { stored_.push_back(log_length()); };
        world::RunSetup setup;
        setup.kdump = kdump;
        setup.machine = world::inside(MACHINE);
        setup.memory_mb = 96;
        setenv("MACHINE_DISK_LOG", kDiskLog, 1);
        device_ = std::make_unique<world::DeviceRun>(scenario, setup);
        device_->run(std::string("chmod +x ") + kWriter);
        for (const world::Dump &dump : world::all_dumps()) {
            if (on_flash(dump)) {
                session_.dumps.push_back({dump.source, world::read_file(dump.source)});
            }
        }
    }

    void renew_dumps(int round) {
        std::string line;
        const size_t first = session_.dumps.size();
        for (const world::Dump &dump : world::all_dumps()) {
            if (on_flash(dump)) {
                const std::string text = dump.source + " " + std::to_string(round) + "\n";
                line += "echo " + text.substr(0, text.size() - 1) + " >" + dump.source + ";";
                session_.dumps.push_back({dump.source, text});
            }
        }
        device_->run(line + "sync");
        for (size_t at = first; at < session_.dumps.size(); ++at) {
            session_.dumps[at].kept_from = log_length();
        }
    }

    void run(const world::Kind &kind) {
        const std::string value = std::to_string(++values_);
        const uint64_t from = log_length();
        device_->run("kdump " + world::shell_line(kind.words) + " 2>/dev/null & " + kWriter + " " +
                     value + " && wait && echo written");
        const uint64_t to = log_length();
        for (const char *name :
             {"ETCD_file", "cloud_config_number_file", "zorb_cloud_register_file"}) {
            session_.settings.push_back({kSettings + name, value, from, to});
        }
        if (values_ == 1) {
            session_.settings.push_back({kSettings + "cloud_DetectDNS", "1", from, to});
        }
    }

    Session end() {
        const world::Outcome outcome = device_->outcome();
        for (DumpVersion &dump : session_.dumps) {
            for (size_t at = outcome.stored.size(); at-- > 0;) {
                if (outcome.stored[at].sha256 == world::Sha256::of(dump.content)) {
                    dump.stored = stored_.at(at);
                }
            }
        }
        for (const world::CommandResult &command : outcome.commands) {
            if (command.line.find(kWriter) == 0 || command.exit_status != 0) {
                throw std::runtime_error(command.line + ": " + command.errors);
            }
        }
        return std::move(session_);
    }

  private:
    static bool on_flash(const world::Dump &dump) { return dump.source.rfind("/mnt/", 0) == 0; }

    std::unique_ptr<world::DeviceRun> device_;
    std::vector<uint64_t> stored_;  // written by the cloud's threads, one upload at a time
    Session session_;
    int values_ = 0;
};

}  // namespace

Session record_session(const std::string &kdump, const std::string &state_writer, int rounds) {
    Recorder recorder(kdump, state_writer);
    for (int round = 0; round < rounds; ++round) {
        if (round > 0) {
            recorder.renew_dumps(round);
        }
        for (const world::Kind &kind : world::kinds()) {
            if (!kind.is_variant) {
                recorder.run(kind);
            }
        }
    }
    return recorder.end();
}

}  // namespace power
