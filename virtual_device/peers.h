/*
 * Real servers of the kinds a device meets, run inside the private world:
 *
 *   tinyproxy  the CONNECT proxy, on 127.0.0.1:3128
 *   dnsmasq    the DNS server, on 127.0.0.1:53, for names that nothing else knows
 *   nginx      an object store on 127.0.0.2:443: TLS, client certificate demanded, bodies kept on
 *              disk, 200 answered
 */
#pragma once

#include <sys/types.h>

#include <map>
#include <string>
#include <vector>

#include "certificates.h"
#include "exchange_record.h"

namespace world {

inline constexpr const char *kNginxAddress = "127.0.0.2";
inline constexpr int kProxyPort = 3128;

// A server process; ended with the object.
class Peer {
  public:
    // Starts it and waits until it accepts connections on address:port. Throws std::runtime_error
    // with what it printed when it does not. `end_signal` makes it finish what it is doing and end.
    Peer(const std::vector<std::string> &command, const std::string &address, int port,
         int end_signal);
    ~Peer();
    Peer(Peer &&other) noexcept;
    Peer &operator=(Peer &&) = delete;

  private:
    pid_t process_;
    int end_signal_;
};

Peer start_tinyproxy();
Peer start_dnsmasq(const std::map<std::string, std::string> &names);
Peer start_nginx(const Identity &server, const CertificateAuthority &clients);

// What the proxy's log says it was asked to connect to, in order.
std::vector<std::string> proxied_targets();

// The names whose addresses the DNS server was asked for, sorted, each once.
std::vector<std::string> dns_queries();

// The requests nginx logged, in order, with the digests of the bodies it kept.
std::vector<Exchange> nginx_exchanges();

}  // namespace world
