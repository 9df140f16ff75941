#include "virtual_device/machine.h"

#include <fmt/format.h>
#include <openssl/evp.h>
#include <poll.h>
#include <sys/socket.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <system_error>

#include "testing/files.h"
#include "testing/private_world.h"
#include "testing/world_mounts.h"

namespace world {
namespace {

constexpr char kMark = '\036';  // stands before and after each answer, see machine/serve
constexpr const char *kWork = "/run/world/machine";
constexpr const char *kErrors = "/run/world/machine.errors";
constexpr const char *kReady = "ready";
constexpr const char *kEndOfInput = "\004";
constexpr int kTerminated = 128 + SIGTERM;

// Lines that the machine's terminal driver takes whole.
std::string in_base64(const std::string &text) {
    constexpr size_t kBytesPerLine = 600;
    std::string lines;
    for (size_t at = 0; at < text.size(); at += kBytesPerLine) {
        const std::string piece = text.substr(at, kBytesPerLine);
        std::string word(piece.size() / 3 * 4 + 5, '\0');
        const int length = EVP_EncodeBlock(reinterpret_cast<unsigned char *>(word.data()),
                                           reinterpret_cast<const unsigned char *>(piece.data()),
                                           static_cast<int>(piece.size()));
        word.resize(static_cast<size_t>(length));
        lines += word + "\n";
    }
    return lines + ".\n";
}

Child start_qemu(const MachineSetup &setup, int line) {
    std::filesystem::create_directories(kWork);
    return spawn(Command({"sh", MACHINE_PARTS "/boot", setup.folder, kWork, setup.program,
                          setup.stand_in, setup.run_script, std::to_string(setup.memory_mb)})
                     .redirect(STDIN_FILENO, line)
                     .redirect(STDOUT_FILENO, line)
                     .redirect(STDERR_FILENO, kErrors));
}

// The caller's terminal, if it is one, passes every byte on until the object's end.
class RawTerminal {
  public:
    RawTerminal() : known_(tcgetattr(STDIN_FILENO, &before_) == 0) {
        if (known_) {
            struct termios raw = before_;
            cfmakeraw(&raw);
            tcsetattr(STDIN_FILENO, TCSADRAIN, &raw);
        }
    }
    ~RawTerminal() {
        if (known_) {
            tcsetattr(STDIN_FILENO, TCSADRAIN, &before_);
        }
    }
    RawTerminal(const RawTerminal &) = delete;
    RawTerminal &operator=(const RawTerminal &) = delete;

  private:
    struct termios before_ = {};
    bool known_;
};

// One changing line on the terminal while the machine boots.
class BootClock {
  public:
    void show() const {
        if (terminal_) {
            const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start_;
            fmt::print(stderr, "\r  the machine boots: {:.1f} s ", passed.count());
        }
    }
    ~BootClock() {
        if (terminal_) {
            fmt::print(stderr, "\r{:40}\r", "");
        }
    }

  private:
    const bool terminal_ = isatty(STDERR_FILENO) != 0;
    const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

}  // namespace

Machine::Machine(MachineSetup setup) : setup_(std::move(setup)) {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
        throw std::system_error(errno, std::generic_category(), "socketpair");
    }
    line_ = ends[0];
    qemu_.emplace(start_qemu(setup_, ends[1]));
    close(ends[1]);
    const BootClock clock;
    while (!answer()) {
        clock.show();
        constexpr int kProgress = 100;
        struct pollfd watched = {line_, POLLIN, 0};
        if (poll(&watched, 1, kProgress) > 0) {
            take();
        }
        if (arrived_.find("Kernel panic") != std::string::npos) {
            fail("the machine does not boot");
        }
    }
    arrived_.clear();
}

Machine::~Machine() { close(line_); }

void Machine::fail(const std::string &what) const {
    constexpr size_t kEnough = 2000;
    const size_t from = arrived_.size() > kEnough ? arrived_.size() - kEnough : 0;
    throw std::runtime_error(what + ":\n" + arrived_.substr(from) + read_file_if_any(kErrors));
}

void Machine::send(const std::string &text) const {
    for (size_t at = 0; at < text.size();) {
        const ssize_t sent = ::send(line_, text.data() + at, text.size() - at, MSG_NOSIGNAL);
        if (sent < 0 && errno != EINTR) {
            throw std::system_error(errno, std::generic_category(), "the machine's serial line");
        }
        at += sent > 0 ? static_cast<size_t>(sent) : 0;
    }
}

void Machine::take() {
    char piece[4096];
    const ssize_t got = read(line_, piece, sizeof piece);
    if (got == 0 || (got < 0 && errno != EINTR)) {
        fail("the machine is gone");
    }
    arrived_.append(piece, static_cast<size_t>(std::max<ssize_t>(got, 0)));
}

std::optional<std::string> Machine::answer() const {
    const size_t from = arrived_.find(kMark);
    const size_t to = from == std::string::npos ? from : arrived_.find(kMark, from + 1);
    if (to == std::string::npos) {
        return std::nullopt;
    }
    return arrived_.substr(from + 1, to - from - 1);
}

Machine::Ended Machine::command(const std::string &line, const Arrival &shown, int keyboard) {
    send(in_base64(line));
    arrived_.clear();
    for (size_t seen = 0;;) {
        const std::optional<std::string> word = answer();
        const size_t end = std::min(arrived_.find(kMark), arrived_.size());
        if (shown && end > seen) {
            shown(std::string_view(arrived_).substr(seen, end - seen));
        }
        seen = end;
        if (word) {
            const bool rebooted = *word == kReady;
            reboots_ += rebooted ? 1 : 0;
            return {rebooted ? kTerminated : std::atoi(word->c_str()), arrived_.substr(0, end)};
        }
        struct pollfd watched[] = {{line_, POLLIN, 0}, {keyboard, POLLIN, 0}};
        poll(watched, 2, -1);
        if (watched[0].revents != 0) {
            take();
        }
        if (watched[1].revents != 0 && !pass_keys()) {
            send(kEndOfInput);
            keyboard = -1;
        }
    }
}

bool Machine::pass_keys() const {
    char piece[256];
    const ssize_t got = read(STDIN_FILENO, piece, sizeof piece);
    if (got > 0) {
        send(std::string(piece, static_cast<size_t>(got)));
    }
    return got > 0;
}

Machine::Ended Machine::run(const std::string &line) {
    return command(line, setup_.console_arrived, -1);
}

int Machine::shell() {
    const RawTerminal raw;
    const Arrival shown = [](std::string_view piece) {
        (void)!write(STDOUT_FILENO, piece.data(), piece.size());
    };
    return command("exec </dev/console >/dev/console 2>&1; stty sane; setsid cttyhack sh -i", shown,
                   STDIN_FILENO)
        .status;
}

void Machine::bring_files_back() {
    const Ended packed = command(
        "cd / && tar -cf /dev/vdc tmp mnt/data run/device $(cd / && ls run/world/sleeps "
        "run/world/output.* run/world/errors.*) && sync",
        {}, -1);
    for (const char *folder : {"/tmp", "/mnt", kDeviceDir}) {
        clear_directory(folder);
    }
    const Finished unpacked =
        world::run(Command({"tar", "--no-same-owner", "--warning=no-timestamp", "-xf",
                            std::string(kWork) + "/results", "-C", "/"}));
    if (packed.status != 0 || unpacked.status != 0) {
        fail("the machine's files cannot be read back");
    }
}

}  // namespace world
