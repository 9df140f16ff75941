#include "testing/spawn.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "testing/shown_folders.h"

#ifdef CLOUD_COVERAGE
extern "C" void __gcov_dump();
#endif

namespace world {
namespace {

std::vector<char *> pointers_to(std::vector<std::string> &texts) {
    std::vector<char *> pointers;
    for (std::string &text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

// Ends without the parent's clean-up; flushes what this process wrote and counted.
[[noreturn]] void end_child(int status) {
    std::fflush(nullptr);
#ifdef CLOUD_COVERAGE
    __gcov_dump();
#endif
    _exit(status);
}

[[noreturn]] void give_up(const char *name) {
    perror(name);
    _exit(127);
}

// Read end, write end.
std::array<int, 2> make_pipe() {
    std::array<int, 2> ends;
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        throw std::system_error(errno, std::generic_category(), "pipe");
    }
    return ends;
}

std::string read_to_end(int descriptor) {
    std::string text;
    char piece[4096];
    ssize_t got = 0;
    while ((got = read(descriptor, piece, sizeof piece)) > 0 || (got < 0 && errno == EINTR)) {
        text.append(piece, got > 0 ? static_cast<size_t>(got) : 0);
    }
    close(descriptor);
    return text;
}

Finished end_of(int status, long peak_kb) {
    Finished end;
    end.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    end.status = end.signal != 0 ? 128 + end.signal : WEXITSTATUS(status);
    end.peak_kb = peak_kb;
    return end;
}

}  // namespace

// A command with everything that execvpe() needs.
class Launch {
  public:
    explicit Launch(const Command &command)
        : command_(command),
          words_(words_of(command)),
          settings_(settings_of(command)),
          arguments_(pointers_to(words_)),
          environment_(pointers_to(settings_)) {}

    // In the child.
    [[noreturn]] void go() {
        for (const Command::Redirection &redirection : command_.redirections_) {
            apply(redirection);
        }
        if (!command_.folder_.empty() && chdir(command_.folder_.c_str()) != 0) {
            give_up(command_.folder_.c_str());
        }
        if (command_.body_) {
            run_body();
        }
        for (const int number : {SIGINT, SIGQUIT, SIGPIPE}) {
            signal(number, SIG_DFL);
        }
        if (command_.before_) {
            command_.before_();
        }
        execvpe(arguments_[0], arguments_.data(), environment_.data());
        give_up(arguments_[0]);
    }

  private:
    static std::vector<std::string> words_of(const Command &command) {
        std::vector<std::string> words;
        for (const std::string &word : command.words_) {
            words.push_back(inside(word));
        }
        return words;
    }

    static std::vector<std::string> settings_of(const Command &command) {
        std::vector<std::string> settings;
        for (char **entry = environ; command.inherits_ && *entry != nullptr; ++entry) {
            const std::string setting = *entry;
            if (command.environment_.count(setting.substr(0, setting.find('='))) == 0) {
                settings.push_back(setting);
            }
        }
        for (const auto &[name, value] : command.environment_) {
            settings.push_back(name + "=" + inside(value));
        }
        return settings;
    }

    static void apply(const Command::Redirection &redirection) {
        int source = redirection.source;
        if (!redirection.path.empty()) {
            const bool reads = redirection.descriptor == STDIN_FILENO;
            source = open(redirection.path.c_str(),
                          O_CLOEXEC | (reads ? O_RDONLY : O_WRONLY | O_CREAT | O_TRUNC), 0644);
        }
        if (source != redirection.descriptor && dup2(source, redirection.descriptor) < 0) {
            give_up(redirection.path.c_str());
        }
    }

    [[noreturn]] void run_body() const {
        if (command_.before_) {
            command_.before_();
        }
        try {
            end_child(command_.body_());
        } catch (const std::exception &error) {
            std::fprintf(stderr, "%s\n", error.what());
            end_child(255);
        }
    }

    const Command &command_;
    std::vector<std::string> words_;
    std::vector<std::string> settings_;
    std::vector<char *> arguments_;
    std::vector<char *> environment_;
};

Command::Command(std::vector<std::string> words) : words_(std::move(words)) {}
Command::Command(std::function<int()> body) : body_(std::move(body)) {}

Command &Command::set(const std::string &name, const std::string &value) {
    environment_[name] = value;
    return *this;
}

Command &Command::set(const std::map<std::string, std::string> &variables) {
    for (const auto &[name, value] : variables) {
        set(name, value);
    }
    return *this;
}

Command &Command::without_inherited_environment() {
    inherits_ = false;
    return *this;
}

Command &Command::redirect(int descriptor, const std::string &path) {
    redirections_.push_back({descriptor, -1, path});
    return *this;
}

Command &Command::redirect(int descriptor, int source) {
    redirections_.push_back({descriptor, source, ""});
    return *this;
}

Command &Command::quiet() {
    return redirect(STDOUT_FILENO, "/dev/null").redirect(STDERR_FILENO, STDOUT_FILENO);
}

Command &Command::in_folder(const std::string &path) {
    folder_ = path;
    return *this;
}

Command &Command::before(std::function<void()> action) {
    before_ = std::move(action);
    return *this;
}

Child::Child(Child &&other) noexcept : pid_(std::exchange(other.pid_, 0)) {}

Child::~Child() {
    if (pid_ > 0) {
        kill(SIGKILL);
        wait();
    }
}

void Child::kill(int signal) const { ::kill(pid_, signal); }

Finished Child::wait() {
    int status = 0;
    struct rusage usage = {};
    while (wait4(pid_, &status, 0, &usage) < 0 && errno == EINTR) {
    }
    pid_ = 0;
    return end_of(status, usage.ru_maxrss);
}

std::optional<Finished> Child::poll() {
    siginfo_t end = {};
    if (waitid(P_PID, static_cast<id_t>(pid_), &end, WEXITED | WNOHANG | WNOWAIT) == 0 &&
        end.si_pid == 0) {
        return std::nullopt;
    }
    return wait();
}

pid_t Child::release() { return std::exchange(pid_, 0); }

Child spawn(const Command &command) {
    Launch launch(command);
    std::fflush(nullptr);  // or the child would write it once more
    const pid_t pid = fork();
    if (pid == 0) {
        launch.go();
    }
    if (pid < 0) {
        throw std::system_error(errno, std::generic_category(), "fork");
    }
    return Child(pid);
}

Finished run(const Command &command) { return spawn(command).wait(); }

Finished run_and_read(const Command &command) {
    const auto [output, input] = make_pipe();
    Command collected = command;
    collected.redirections_.insert(collected.redirections_.begin(), {STDOUT_FILENO, input, ""});
    Child child = spawn(collected);
    close(input);
    const std::string text = read_to_end(output);
    Finished end = child.wait();
    end.output = text;
    return end;
}

std::vector<int> run_together(int count, const std::function<int(int)> &work) {
    const std::array<int, 2> gate = make_pipe();
    std::vector<Child> children;
    for (int i = 0; i < count; ++i) {
        children.push_back(spawn(Command([&gate, &work, i] {
            close(gate[1]);
            read_to_end(gate[0]);  // until the parent opens the gate
            return work(i);
        })));
    }
    close(gate[0]);
    close(gate[1]);
    std::vector<int> results;
    for (Child &child : children) {
        const Finished end = child.wait();
        results.push_back(end.signal == 0 ? end.status : 255);
    }
    return results;
}

int run_apart(const std::function<int()> &work) {
    return run_together(1, [&](int) { return work(); }).front();
}

}  // namespace world
