/*
 * A private world: the calling program moves into mount, network, pid, ipc and uts namespaces of
 * its own (and a user namespace when it is not privileged), where a device's absolute paths and
 * ports exist and belong to it alone:
 *
 *   /tmp, /mnt    empty, but for /tmp/app/cloud_tmp and /mnt/data/iss_config/current_config
 *   /dev          a few harmless devices; /dev/console is a FIFO that nobody else reads
 *   /etc          the machine's, with private hosts, resolv.conf, nsswitch.conf and ssl/certs
 *   /run/device   the working directory, for the client's CRT and KEY
 *   /run/world    records and what belongs to the test; the device's programs never touch it
 *   PATH          begins with fakes of `reboot` and its siblings, which only record their calls
 *   127.0.0.1     up, every port free; no other network
 *
 * Wherever the project lies on the machine, the world shows it and its build below /run/world
 * (shown_folders.h). Everything else of the machine keeps its path.
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
    std::vector<std::string> keep;  // folders to show besides the project's, see shown_folders.h
    std::string host_name = "device";
};

// Enters the world. Returns inside it, in a new process; the calling process stays outside, passes
// signals on, and ends as the returning one ends (same exit status, same signal). Call it first
// thing, before any thread exists. Where namespaces are forbidden it says so, and what to do, on
// standard error and ends the program with status 1.
void enter(const Options &options = {});

// The world's first process as the machine outside numbers it, for nsenter.
int outer_process();

// Lets `name` resolve to `address`, through the world's /etc/hosts.
void add_host(const std::string &name, const std::string &address = "127.0.0.1");

// Restores /tmp, /mnt, /run/device, /etc/hosts, /etc/ssl/certs and the records to their state after
// enter().
void reset();

// How often the fake `reboot` ran since the last reset().
int reboot_count();

}  // namespace world
