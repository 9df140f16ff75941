/*
 * A private world: the calling program moves into mount, network, pid, ipc and uts namespaces of
 * its own (and a user namespace when it is not privileged), where a device's absolute paths and
 * ports exist and belong to it alone:
 *
 *   /tmp, /mnt, /run      empty; /tmp/app/cloud_tmp and /mnt/data/iss_config/current_config exist
 *   /dev                  a few harmless devices; /dev/console is a FIFO that nobody else reads
 *   /etc                  the machine's, with private hosts, resolv.conf, nsswitch.conf and
 * ssl/certs /run/device           the working directory, for the client's CRT and KEY /run/world
 * records (see paths below); never touched by the device's programs PATH                  begins
 * with stand-ins; `reboot` there only records its call 127.0.0.1             up, every port free;
 * no other network
 *
 * The folders of the project, of its build and of the running program stay reachable under their
 * own paths, also when they lie under /tmp, /mnt or /run.
 *
 * Nothing outlives the program: when it ends or is killed, with SIGKILL too, the kernel ends every
 * process of the world and drops its mounts.
 */
#pragma once

#include <string>
#include <vector>

namespace world {

inline constexpr const char *kDeviceDir = "/run/device";
inline constexpr const char *kStandInDir = "/run/world/bin";
inline constexpr const char *kSleepRecord = "/run/world/sleeps";      // one line per call: seconds
inline constexpr const char *kSleepLimit = "/run/world/sleep_limit";  // see sleep_stand_in.c
inline constexpr const char *kRebootRecord = "/run/world/reboots";    // one line per call

struct Options {
    std::vector<std::string> keep;  // further folders that must stay reachable
    std::string host_name = "device";
};

// Enters the world. Returns inside it, in a new process; the calling process stays outside, passes
// signals on, and ends as the returning one ends (same exit status, same signal). Call it first
// thing, before any thread exists. Where namespaces are forbidden it says so, and what to do, on
// standard error and ends the program with status 1.
void enter(const Options &options = {});

// What enter() keeps reachable: the options' folders, those of the project, its build, the running
// program and the caller.
std::vector<std::string> folders_to_keep(const Options &options);

// The world's first process as the machine outside numbers it, for nsenter.
int outer_process();

// Lets `name` resolve to `address`, through the world's /etc/hosts.
void add_host(const std::string &name, const std::string &address = "127.0.0.1");

// Puts /tmp, /mnt, /run/device, /etc/hosts, /etc/ssl/certs and the records back to how enter() left
// them.
void reset();

// How often the `reboot` stand-in ran since the last reset().
int reboot_count();

}  // namespace world
