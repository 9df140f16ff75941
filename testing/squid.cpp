#include <filesystem>
#include <sstream>

#include "testing/daemon.h"
#include "testing/files.h"
#include "testing/shown_folders.h"

namespace world {
namespace {

const std::string kAccessLog = kDaemonFolder + "squid.access.log";

constexpr const char *kSettings = R"(
http_port 127.0.0.1:3128
pid_filename /run/world/daemons/squid.pid
logformat exchange %ru -> %>Hs, user %un
acl tunnels method CONNECT
access_log stdio:/run/world/daemons/squid.access.log exchange tunnels
cache_log /run/world/daemons/squid.cache.log
coredump_dir /run/world/daemons
error_directory /run/world/daemons/errors
cache deny all
cache_store_log none
netdb_filename none
pinger_enable off
unlinkd_program /bin/true
visible_hostname proxy
shutdown_lifetime 0 seconds
dns_nameservers 127.0.0.9
)";

// The password as `openssl passwd -apr1 -salt proxy word` writes it.
constexpr const char *kUsers = "device:$apr1$proxy$Kk5OnRVK4EXAuxKR4yWFB/\n";

std::string unpacked() { return inside(WORLD_SOURCE_DIR "/.deps/squid"); }

std::string settings(bool with_password) {
    std::string text = kSettings;
    text += "mime_table " + unpacked() + "/usr/share/squid/mime.conf\n";
    text += "icon_directory " + unpacked() + "/usr/share/squid/icons\n";
    if (with_password)
        text += "auth_param basic program " + unpacked() + "/usr/lib/squid/basic_ncsa_auth " +
                kDaemonFolder +
                "squid.users\n"
                "auth_param basic children 1 startup=1\n"
                "acl known proxy_auth REQUIRED\n"
                "http_access allow known\n"
                "http_access deny all\n";
    else
        text += "http_access allow all\n";
    return text;
}

}  // namespace

Daemon start_squid(bool with_password) {
    const std::string file = kDaemonFolder + "squid.conf";
    write_file(file, settings(with_password));
    write_file(kDaemonFolder + "squid.users", kUsers);
    std::filesystem::create_directories(kDaemonFolder + "errors");
    // It refuses to be root, which is the world's only user.
    const Command command({"unshare", "--user", "--map-user=1000", "--map-group=1000",
                           unpacked() + "/usr/sbin/squid", "-N", "-f", file});
    return {command, {kProxyPort}};
}

std::vector<std::string> squid_requests() {
    std::vector<std::string> requests;
    std::istringstream log(read_file_if_any(kAccessLog));
    for (std::string line; std::getline(log, line);)
        requests.push_back(line);
    return requests;
}

}  // namespace world
