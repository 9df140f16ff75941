// squid as the CONNECT proxy, on 127.0.0.1:3128.
#pragma once

#include <string>
#include <vector>

#include "testing/daemon.h"

namespace world {

// With a password it serves only the user "device" with the password "word" (Basic).
Daemon start_squid(bool with_password);

// Squid's access log: each request with its status, and the user that it knew.
std::vector<std::string> squid_requests();

}  // namespace world
