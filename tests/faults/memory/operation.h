// The table of tortured operations: a row for each public function in each situation.
#pragma once

#include <functional>
#include <string>
#include <vector>

// Whether an operation needs the servers of servers.h, and whether its first call in a process,
// which starts the libraries, is tortured as well.
enum class Reach { kAlone, kNetwork, kNetworkFromCold };

struct Operation {
    std::string name;                      // the function; ", " and a situation may follow
    std::function<void()> prepare;         // runs before every call
    std::function<void()> call;            // allocates nothing of its own
    std::function<std::string()> outcome;  // in words; releases what the call handed out
    std::vector<std::string> allowed;      // the first with enough memory, any of them without
    Reach reach = Reach::kAlone;
    // Also allowed where OpenSSL's first start has failed: it stays unusable in that process.
    std::vector<std::string> allowed_cold = {};
    bool may_abort = false;  // by the documented assertion

    std::string function() const { return name.substr(0, name.find(", ")); }
};

using Operations = std::vector<Operation>;

// All rows of several tables.
Operations joined(const std::vector<Operations> &tables);

Operations log_operations();
Operations state_operations();
Operations digest_operations();
Operations json_operations();
Operations request_operations();
Operations cloud_operations();
Operations device_operations();
Operations job_operations();

Operations all_operations();

// ---- For the rows. Both variables are empty and the servers as usual before each prepare(). ----

extern long g_result;
extern char g_text[1024];

// The call of a row that keeps its result.
#define CALL(...) [=] { g_result = static_cast<long>(__VA_ARGS__); }

inline void nothing() {}

// "0, " for the result 0.
std::string result();

// "0, " and the text.
std::string result_and_text();

// "done" for the result 0, "libcurl's code" for one of those, else the number.
std::string transfer_result();

// The file's content in quotes, or "none".
std::string content_of(const std::string &path);

// The same; removes the file.
std::string taken(const std::string &path);

// Removes a file, if it is there.
void without_file(const std::string &path);

// For the next call: memory is back at its sleep() of that number; sleep() removes `file` before
// the call would retry forever.
void memory_returns_at_sleep(int number, const char *file);

// The console since the row was prepared, without time stamps.
std::string console_text();

// Standard output since then.
std::string output_text();
