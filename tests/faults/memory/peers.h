// Local service and cloud, in a process of their own: the tortured one uses TLS for the first time
// only when an operation does.
#pragma once

#include <string>

// What the peers keep for the operations' outcomes, one file each.
inline const std::string kStoredUpload = "/run/world/torture/upload";
inline const std::string kLocalChange = "/run/world/torture/change";

// What an operation's set-up tells them: the payload of the proxy settings, where it is not "off",
// and that failure logs are forbidden, by being there.
inline const std::string kProxySettings = "/run/world/torture/proxy";
inline const std::string kNoFailLogs = "/run/world/torture/no_fail_logs";

inline constexpr const char *kCloudHost = "tfa.test";  // demands a client certificate
inline constexpr const char *kTimeHost = "time.test";  // demands none
inline constexpr const char *kUploadUrl = "https://tfa.test/put";

// Starts them on 127.0.0.1, ports 8000 and 443 (TLS). They end with this program.
void start_peers();

// Forgets all four.
void clear_peers();
