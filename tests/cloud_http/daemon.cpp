#include "daemon.h"

#include <netinet/in.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>

namespace {

pid_t start(const std::vector<std::string> &command) {
    std::vector<char *> arguments;
    for (const std::string &argument : command)
        arguments.push_back(const_cast<char *>(argument.c_str()));
    arguments.push_back(nullptr);
    pid_t process = -1;
    if (posix_spawnp(&process, arguments[0], nullptr, nullptr, arguments.data(), environ) != 0)
        return -1;
    return process;
}

bool somebody_listens(uint16_t port) {
    struct sockaddr_in place = {};
    place.sin_family = AF_INET;
    place.sin_port = htons(port);
    place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const int client = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const bool connected =
        connect(client, reinterpret_cast<struct sockaddr *>(&place), sizeof place) == 0;
    close(client);
    return connected;
}

bool wait_for_listener(pid_t process, uint16_t port) {
    for (int tries = 0; tries < 1000; ++tries) {
        if (waitpid(process, nullptr, WNOHANG) != 0)
            return false;
        if (somebody_listens(port))
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return false;
}

}  // namespace

Daemon::Daemon(const std::vector<std::string> &command, uint16_t tcp_port)
    : process_(start(command)), started_(process_ > 0 && wait_for_listener(process_, tcp_port)) {}

Daemon::~Daemon() {
    if (process_ > 0) {
        kill(process_, SIGKILL);
        waitpid(process_, nullptr, 0);
    }
}
