// nginx as an object store: TLS, client certificate demanded, bodies kept on disk, 200 answered.
#pragma once

#include <vector>

#include "testing/certificates.h"
#include "testing/daemon.h"
#include "testing/exchange_record.h"

namespace world {

inline constexpr const char *kNginxAddress = "127.0.0.2";  // port 443

Daemon start_nginx(const Identity &server, const CertificateAuthority &clients);

inline const std::string kNginxLog = kDaemonFolder + "nginx.access.log";

// The requests that a store logged, in order, with the digests of the bodies it kept.
std::vector<Exchange> logged_exchanges(const std::string &service, const std::string &log_path);

}  // namespace world
