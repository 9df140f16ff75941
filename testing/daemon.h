/*
 * Daemons of the machine, run inside the private world. Real ones that a device meets:
 *
 *   tinyproxy  the CONNECT proxy, on port 3128
 *   squid      the same, on 127.0.0.1 only, with or without a password
 *   dnsmasq    the DNS server, on 127.0.0.1:53, for names that nothing else knows; on [::1]:53 if
 *              one of them has an IPv6 address
 *   nginx      an object store on 127.0.0.2:443: TLS, client certificate demanded, bodies kept on
 *              disk, 200 answered
 */
#pragma once

#include <csignal>
#include <map>
#include <string>
#include <vector>

#include "testing/certificates.h"
#include "testing/exchange_record.h"
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
// With a password it serves only the user "device" with the password "word" (Basic).
Daemon start_squid(bool with_password);
Daemon start_dnsmasq(const std::map<std::string, std::string> &names);

inline constexpr const char *kNginxAddress = "127.0.0.2";
Daemon start_nginx(const Identity &server, const CertificateAuthority &clients);

// The targets that the proxy was asked to connect to, in order, since tinyproxy was started.
std::vector<std::string> proxied_targets();

// Squid's access log: each request with its status, and the user that it knew.
std::vector<std::string> squid_requests();

inline const std::string kNginxLog = kDaemonFolder + "nginx.access.log";

// The requests that a store logged, in order, with the digests of the bodies it kept.
std::vector<Exchange> logged_exchanges(const std::string &service, const std::string &log_path);

// The names whose addresses the DNS server was asked for, sorted, each once.
std::vector<std::string> dns_queries();

}  // namespace world
