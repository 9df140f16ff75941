/* One virtual device in the private world: switched on, used, and looked at afterwards. */
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cloud.h"
#include "console.h"
#include "device_files.h"
#include "exchange_record.h"
#include "http_server.h"
#include "local_service.h"
#include "peers.h"
#include "scenario.h"

namespace world {

struct CommandResult {
    std::string line;
    int exit_status = 0;  // 128 and the number when a signal ended it
    std::string console;  // what reached /dev/console meanwhile
    std::string output;   // standard output
    std::string errors;   // standard error
    long peak_kb = 0;     // largest resident set of any process of it
};

// All there is to know about a run.
struct Outcome {
    std::vector<CommandResult> commands;
    std::vector<Exchange> exchanges;
    std::vector<std::string> proxied;      // CONNECT targets the proxy was asked for
    std::vector<std::string> dns_queries;  // names the DNS server was asked for, each once
    std::vector<StoredObject> stored;
    std::vector<unsigned> sleeps;  // seconds of each; recorded, not slept
    int reboots = 0;
    FileTree before;
    FileTree after;
    nlohmann::json local_state;
};

// How commands are run on the device.
struct RunSetup {
    std::string kdump;  // the program, or a command line that ends in it
    std::function<void(std::string_view)> console_arrived;
    bool output_passes = false;  // standard output is shown, not collected
};

class DeviceRun {
  public:
    // Seeds the files, starts local service, cloud and peers. Call it inside the private world.
    DeviceRun(const Scenario &scenario, RunSetup setup);

    // Runs a shell command line on the device and waits for its end.
    void run(const std::string &line);
    // Opens an interactive shell on the device; returns its exit status.
    int shell();

    Outcome outcome();
    const ExchangeRecord &record() const { return record_; }

  private:
    void place_programs();
    void write_files();
    void name_hosts();
    void start_servers();
    pid_t start(const std::vector<std::string> &command, const std::string &output,
                const std::string &errors) const;

    const Scenario scenario_;
    const RunSetup setup_;
    Outcome outcome_;
    ExchangeRecord record_;
    std::unique_ptr<LocalService> local_;
    std::unique_ptr<Cloud> cloud_;
    std::unique_ptr<HttpServer> local_server_;
    std::unique_ptr<HttpServer> cloud_server_;
    std::unique_ptr<HttpServer> plain_time_server_;
    std::vector<Peer> peers_;
    Console console_;
};

}  // namespace world
