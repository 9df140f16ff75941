/* One virtual device in the private world: starts it, runs commands on it, reports the outcome. */
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "testing/console.h"
#include "testing/daemon.h"
#include "testing/device_files.h"
#include "testing/fake_cloud.h"
#include "testing/fake_proxy.h"
#include "virtual_device/machine.h"
#include "virtual_device/scenario.h"

namespace world {

struct CommandResult {
    std::string line;
    int exit_status = 0;  // 128 and the number when a signal ended it
    std::string console;  // what reached /dev/console meanwhile
    std::string output;   // standard output
    std::string errors;   // standard error
    long peak_kb = 0;     // largest resident set of any process of it
};

// The outcome of a run.
struct Outcome {
    std::vector<CommandResult> commands;
    std::vector<Exchange> exchanges;
    std::vector<std::string> proxied;      // what the proxy's log has, a request each
    std::vector<std::string> dns_queries;  // names the DNS server was asked for, each once
    std::vector<StoredObject> stored;
    std::vector<unsigned> sleeps;  // seconds of each; recorded, not slept
    int reboots = 0;
    FileTree before;
    FileTree after;
    nlohmann::json local_state;
};

// How the device runs commands.
struct RunSetup {
    std::string kdump;  // a shell line that ends in the program
    std::function<void(std::string_view)> console_arrived;
    bool output_passes = false;  // standard output is shown, not collected
    std::string machine = {};    // a machine's folder: commands run there, kdump is one program
    int memory_mb = 0;           // of the machine
};

class DeviceRun {
  public:
    // Seeds the files, starts local service, cloud and daemons. Call it inside the private world.
    DeviceRun(const Scenario &scenario, RunSetup setup);

    // Runs a shell command line on the device and waits for its end.
    void run(const std::string &line);
    // Opens an interactive shell on the device; returns its exit status.
    int shell();

    Outcome outcome();
    const ExchangeRecord &record() const { return fake_->record; }

  private:
    void place_programs();
    void write_files();
    void start_servers();
    void boot_machine();
    void run_on_machine(const std::string &line);
    void collect_from_machine();
    Command on_device(const std::vector<std::string> &words) const;

    const Scenario scenario_;
    const RunSetup setup_;
    Outcome outcome_;
    std::unique_ptr<FakeCloud> fake_;
    std::unique_ptr<FakeProxy> proxy_;
    std::vector<Daemon> daemons_;
    Console console_;
    std::unique_ptr<Machine> machine_;
    size_t before_boot_ = 0;  // commands whose outputs a reboot of the machine has removed
};

}  // namespace world
