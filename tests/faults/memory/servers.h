// The local service and the cloud, in a process of their own: the tortured one first uses TLS in an
// operation.
#pragma once

#include <string>

// The servers record here, for the operations' outcomes, one file each.
inline const std::string kStoredUpload = "/run/world/torture/upload";
inline const std::string kLocalChange = "/run/world/torture/change";

// An operation's set-up writes these: proxy settings other than "off"; any content forbids failure
// logs.
inline const std::string kProxySettings = "/run/world/torture/proxy";
inline const std::string kNoFailLogs = "/run/world/torture/no_fail_logs";

inline constexpr const char *kCloudHost = "tfa.test";  // demands a client certificate
inline constexpr const char *kTimeHost = "time.test";  // demands none
inline constexpr const char *kUploadUrl = "https://tfa.test/put";

// Starts them on 127.0.0.1, ports 8000 and 443 (TLS). They end with this program.
void start_servers();

// Removes all four files.
void reset_servers();
