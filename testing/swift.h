// OpenStack Swift as an object store, through its S3 interface, and the pre-signed URLs that it takes.
#pragma once

#include <cstddef>
#include <set>
#include <string>

#include "testing/certificates.h"
#include "testing/daemon.h"

namespace world {

inline constexpr const char *kSwiftAddress = "127.0.0.3";  // port 443
inline const std::string kSwiftLog = kDaemonFolder + "swift/access.log";

Daemon start_swift(const Identity &server);

// How URLs can be signed. The store takes an upload with the first three only.
inline const std::set<std::string> kSignatures = {
    "exact", "typed", "odd-name", "expired", "forged", "other-method", "other-host", "other-type"};

// Path and query of the upload URL with that number, for an object whose name is as in a URL.
std::string presigned_target(const std::string &signature, size_t number,
                             const std::string &object);

}  // namespace world
