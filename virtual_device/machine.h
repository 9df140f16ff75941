/*
 * A booted machine: a kernel of its own under QEMU, busybox, /mnt/data on a disk, a serial console.
 * Runs inside the private world: takes the device's files from it, reaches its loopback, and brings
 * the files back. The parts are in machine/, docs/machine.md explains them.
 */
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "testing/spawn.h"

namespace world {

struct MachineSetup {
    std::string folder;      // what script/bootstrap --machine has made, or the like
    std::string program;     // kdump
    std::string stand_in;    // preloaded with a run whose sleeps are recorded
    std::string run_script;  // cloudagent-run
    int memory_mb = 96;      // the kernel keeps a third of it
    std::function<void(std::string_view)> console_arrived;
};

class Machine {
  public:
    struct Ended {
        int status = 0;
        std::string console;  // what arrived on the serial line meanwhile
    };

    // Boots; returns when the machine takes commands. Throws std::runtime_error with the end of the
    // serial line's text when it stops before.
    explicit Machine(MachineSetup setup);
    ~Machine();
    Machine(const Machine &) = delete;
    Machine &operator=(const Machine &) = delete;

    // Runs a shell command line. Where the machine reboots meanwhile, returns after that, with the
    // status of a command ended by SIGTERM.
    Ended run(const std::string &line);
    // Connects the caller's terminal to a shell on the serial line.
    int shell();
    int reboots() const { return reboots_; }

    // Replaces the world's /tmp, /mnt and working directory by the machine's. /run/world gets its
    // record of sleeps, and the outputs of command N since the boot (from 1) as output.N, errors.N.
    void bring_files_back();

  private:
    using Arrival = std::function<void(std::string_view)>;

    // Passes on what arrives, and what is typed on descriptor `keyboard` unless that is -1.
    Ended command(const std::string &line, const Arrival &shown, int keyboard);
    // The word between the first two marks that have arrived.
    std::optional<std::string> answer() const;
    void take();
    bool pass_keys() const;
    void send(const std::string &text) const;
    [[noreturn]] void fail(const std::string &what) const;

    const MachineSetup setup_;
    int line_ = -1;  // our end of the serial line
    std::string arrived_;
    int reboots_ = 0;
    std::optional<Child> qemu_;
};

}  // namespace world
