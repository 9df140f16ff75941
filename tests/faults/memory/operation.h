// The table of what is tortured: one public function in one situation, a row each.
#pragma once

#include <functional>
#include <string>
#include <vector>

// Whether an operation talks to the peers of peers.h, and whether what it does as the first one of
// a process, starting its libraries, is tortured as well.
enum class Reach { kAlone, kNetwork, kNetworkFromCold };

struct Operation {
    std::string function;
    std::string situation;
    Reach reach = Reach::kAlone;
    std::function<void()> prepare;         // sets files and variables up, before every call
    std::function<void()> call;            // allocates nothing of its own
    std::function<std::string()> outcome;  // what the call came to; releases what it handed out
    // The outcomes that are allowed: the first with enough memory, any of them without.
    std::vector<std::string> allowed;
    bool may_end_by_assertion = false;
    // And in a process in which OpenSSL's first start failed: it stays of no use there.
    std::vector<std::string> allowed_cold = {};

    std::string name() const { return situation.empty() ? function : function + ", " + situation; }
};

using Operations = std::vector<Operation>;

// Rows of each reach. Behind ", " the name goes on with the situation.
Operation alone(const std::string &name, std::function<void()> prepare, std::function<void()> call,
                std::function<std::string()> outcome, std::vector<std::string> allowed,
                bool may_end_by_assertion = false);
Operation networked(const std::string &name, std::function<void()> prepare,
                    std::function<void()> call, std::function<std::string()> outcome,
                    std::vector<std::string> allowed);
Operation networked_from_cold(const std::string &name, std::function<void()> prepare,
                              std::function<void()> call, std::function<std::string()> outcome,
                              std::vector<std::string> allowed);

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

// ---- Words for the rows' outcomes ----

// "done" for 0, "libcurl's code" for one of those, else the number.
std::string transfer_result(int result);

// The file's content in quotes, or "none".
std::string content_of(const std::string &path);

// Removes a file, if it is there.
void without_file(const std::string &path);

// For the next call: memory is back at its sleep() of that number, and `file` is removed when it
// sleeps so often that it would never end.
void memory_returns_at_sleep(int number, const char *file);

// The console since the row was prepared, without time stamps.
std::string console_text();

// Standard output since then.
std::string output_text();
