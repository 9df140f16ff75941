/*
 * Child processes: the one way to start them.
 *
 *   const Finished tar = world::run(Command({"tar", "tf", archive}).redirect(STDOUT_FILENO, list));
 *   Child worker = world::spawn(Command([&] { return work(); }));
 */
#pragma once

#include <sys/types.h>

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace world {

// What a child runs, and in which surroundings. All but the actions is prepared before the fork, so
// a program with threads may start commands. Paths of the machine in words and variables are
// translated into the world's, by inside() of shown_folders.h.
class Command {
  public:
    // A program, looked up in PATH, and its arguments. SIGINT, SIGQUIT and SIGPIPE are back to
    // their defaults in it. When it cannot be started, the child says so and ends with status 127.
    explicit Command(std::vector<std::string> words);
    // A function of this program, whose result is the exit status.
    explicit Command(std::function<int()> body);

    Command &set(const std::string &name, const std::string &value);
    Command &set(const std::map<std::string, std::string> &variables);
    Command &without_inherited_environment();

    // Redirections take effect in their order: 1 to a path, then 2 to 1, sends both outputs to the
    // file. Standard input is read from the path, every other descriptor creates or truncates it.
    Command &redirect(int descriptor, const std::string &path);
    Command &redirect(int descriptor, int source);
    // Discards both outputs.
    Command &quiet();

    Command &in_folder(const std::string &path);
    // Runs in the child, after redirections, right before the program.
    Command &before(std::function<void()> action);

  private:
    friend class Launch;
    friend struct Finished run_and_read(const Command &command);
    struct Redirection {
        int descriptor;
        int source;
        std::string path;  // in place of the source
    };
    std::vector<std::string> words_;
    std::function<int()> body_;
    std::map<std::string, std::string> environment_;
    bool inherits_ = true;
    std::vector<Redirection> redirections_;
    std::string folder_;
    std::function<void()> before_;
};

// How a child ended.
struct Finished {
    int status = 0;      // its exit status; 128 and the signal's number when a signal ended it
    int signal = 0;      // that signal; 0 when it exited
    long peak_kb = 0;    // largest resident set of any process of it
    std::string output;  // what run_and_read() has read
};

// A running child; killed and collected with the object, unless it has been collected.
class Child {
  public:
    explicit Child(pid_t pid) : pid_(pid) {}
    ~Child();
    Child(Child &&other) noexcept;
    Child &operator=(Child &&) = delete;

    pid_t pid() const { return pid_; }
    void kill(int signal) const;
    // Waits for the end and collects it.
    Finished wait();
    // The same without waiting: nothing while it runs.
    std::optional<Finished> poll();
    // Leaves it to the caller, who collects it by its id.
    pid_t release();

  private:
    pid_t pid_;
};

// Throws std::system_error when no process can be made.
Child spawn(const Command &command);

// Runs a command to its end.
Finished run(const Command &command);
// The same; reads what it writes to standard output, and to whatever is redirected there.
Finished run_and_read(const Command &command);

// Starts `count` processes that wait for each other and then run work(0), work(1)... Returns their
// results (0 to 254; 255 when one was killed) in order.
std::vector<int> run_together(int count, const std::function<int(int)> &work);
// The same with a single process, for work that would spoil this one.
int run_apart(const std::function<int()> &work);

}  // namespace world
