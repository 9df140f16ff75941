/*
 * Daemons of the machine, run inside the private world. Real ones that a device meets:
 *
 *   tinyproxy  the CONNECT proxy, on port 3128
 *   dnsmasq    the DNS server, on 127.0.0.1:53, for names that nothing else knows; on [::1]:53 if
 *              one of them has an IPv6 address
 *   nginx      an object store, see nginx.h
 */
#pragma once

#include <csignal>
#include <map>
#include <string>
#include <vector>

#include "testing/spawn.h"

namespace world {

// Logs and settings of the daemons below.
inline const std::string kDaemonFolder = "/run/world/daemons/";
inline constexpr int kProxyPort = 3128;

// When a daemon serves: it accepts connections there, or its output holds the mark.
struct Ready {
    int port = 0;
    std::string address = "127.0.0.1";
    std::string mark = {};
};

// A daemon that ends with the object, or when end() asks it to.
class Daemon {
  public:
    // Starts it and waits until it is ready. Throws std::runtime_error with what it printed when it
    // ends or takes too long. `end_signal` lets it finish its work.
    Daemon(Command command, const Ready &ready, int end_signal = SIGTERM);
    ~Daemon();
    Daemon(Daemon &&) = default;
    Daemon &operator=(Daemon &&) = delete;

    // Sends the signal and waits.
    Finished end(int signal);
    std::string output() const;

  private:
    std::string output_;  // the file's path
    Child child_;
    int end_signal_;
};

Daemon start_tinyproxy(const std::string &address = "127.0.0.1");
Daemon start_dnsmasq(const std::map<std::string, std::string> &names);

// The targets that the proxy was asked to connect to, in order, since it was started.
std::vector<std::string> proxied_targets();

// The names whose addresses the DNS server was asked for, sorted, each once.
std::vector<std::string> dns_queries();

}  // namespace world
