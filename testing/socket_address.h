// A numeric IPv4 or IPv6 address and a port, as sockets take them.
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cstdint>
#include <string>

namespace world {

inline bool is_ipv6(const std::string &address) { return address.find(':') != std::string::npos; }

class SocketAddress {
  public:
    SocketAddress(const std::string &address, int port)
        : family_(is_ipv6(address) ? AF_INET6 : AF_INET) {
        const bool six = family_ == AF_INET6;
        void *const place = six ? static_cast<void *>(&six_.sin6_addr) : &four_.sin_addr;
        (six ? six_.sin6_family : four_.sin_family) = static_cast<sa_family_t>(family_);
        (six ? six_.sin6_port : four_.sin_port) = htons(static_cast<uint16_t>(port));
        inet_pton(family_, address.c_str(), place);
    }

    int new_socket() const { return socket(family_, SOCK_STREAM | SOCK_CLOEXEC, 0); }
    bool bind(int handle) const { return ::bind(handle, get(), size()) == 0; }
    bool connect(int handle) const { return ::connect(handle, get(), size()) == 0; }

  private:
    const sockaddr *get() const {
        return family_ == AF_INET6 ? reinterpret_cast<const sockaddr *>(&six_)
                                   : reinterpret_cast<const sockaddr *>(&four_);
    }
    socklen_t size() const { return family_ == AF_INET6 ? sizeof six_ : sizeof four_; }

    int family_;
    sockaddr_in four_ = {};
    sockaddr_in6 six_ = {};
};

}  // namespace world
