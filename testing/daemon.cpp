#include "testing/daemon.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <set>
#include <sstream>
#include <stdexcept>
#include <thread>
#include <utility>

#include "testing/files.h"
#include "testing/socket_address.h"

namespace world {
namespace {

const std::string kProxyLog = kDaemonFolder + "tinyproxy.log";
const std::string kDnsLog = kDaemonFolder + "dnsmasq.log";

bool accepts(const Ready &ready) {
    const SocketAddress place(ready.address, ready.port);
    const int handle = place.new_socket();
    const bool good = place.connect(handle);
    close(handle);
    return good;
}

std::string new_output_file() {
    static int count;
    std::string path = kDaemonFolder + "output-" + std::to_string(++count);
    write_file(path, "");
    return path;
}

// The word after a phrase, in each line of a log that has it.
std::vector<std::string> words_after(const std::string &phrase, const std::string &log_path) {
    std::vector<std::string> words;
    std::istringstream log(read_file_if_any(log_path));
    for (std::string line; std::getline(log, line);) {
        const size_t at = line.find(phrase);
        if (at != std::string::npos) {
            const size_t from = at + phrase.size();
            words.push_back(line.substr(from, line.find(' ', from) - from));
        }
    }
    return words;
}

}  // namespace

Daemon::Daemon(Command command, const Ready &ready, int end_signal)
    : output_(new_output_file()),
      child_(
          spawn(command.redirect(STDOUT_FILENO, output_).redirect(STDERR_FILENO, STDOUT_FILENO))),
      end_signal_(end_signal) {
    constexpr int kTries = 6000;
    for (int i = 0; i < kTries && !child_.poll(); ++i) {
        if (ready.mark.empty() ? accepts(ready) : output().find(ready.mark) != std::string::npos) {
            return;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    throw std::runtime_error("a daemon does not start:\n" + output());
}

Daemon::~Daemon() {
    if (child_.pid() > 0) {
        end(end_signal_);
    }
}

Finished Daemon::end(int signal) {
    child_.kill(signal);
    return child_.wait();
}

std::string Daemon::output() const { return read_file_if_any(output_); }

Daemon start_tinyproxy(const std::string &address) {
    const std::string settings = kDaemonFolder + "tinyproxy.conf";
    write_file(kProxyLog, "");
    write_file(settings, "Port " + std::to_string(kProxyPort) + "\nListen " + address +
                             "\nTimeout 60\nLogFile \"" + kProxyLog +
                             "\"\nLogLevel Connect\nMaxClients 300\n"
                             "ConnectPort 443\nConnectPort 8080\n");
    return {Command({"tinyproxy", "-d", "-c", settings}), {kProxyPort, address}};
}

Daemon start_dnsmasq(const std::map<std::string, std::string> &names) {
    const bool six = std::any_of(names.begin(), names.end(),
                                 [](const auto &name) { return is_ipv6(name.second); });
    const std::string own = six ? "::1" : "127.0.0.1";
    std::vector<std::string> words = {"dnsmasq",
                                      "--no-daemon",
                                      "--no-resolv",
                                      "--no-hosts",
                                      "--user=root",
                                      "--listen-address=" + own,
                                      "--pid-file=",
                                      "--conf-file=/dev/null",
                                      "--bind-interfaces",
                                      "--log-queries",
                                      "--log-facility=" + kDnsLog};
    for (const auto &[name, address] : names) {
        words.push_back("--address=/" + name + "/" + address);
    }
    write_file(kDnsLog, "");
    return {Command(words), {53, own}};
}

std::vector<std::string> proxied_targets() { return words_after("): CONNECT ", kProxyLog); }

std::vector<std::string> dns_queries() {
    std::set<std::string> once;
    for (const char *query : {"query[A] ", "query[AAAA] "})
        for (const std::string &name : words_after(query, kDnsLog))
            once.insert(name);
    return {once.begin(), once.end()};
}

}  // namespace world
