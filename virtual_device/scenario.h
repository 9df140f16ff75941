/*
 * A scenario: what is on the device, what runs on it, and how the cloud and the local service
 * behave meanwhile. The form of the JSON files is described in scenarios/README.md and checked
 * when one is read.
 */
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "testing/cloud.h"
#include "testing/local_service.h"
#include "testing/service.h"

namespace world {

struct Scenario {
    std::string name;
    std::string about;             // one line, for the list
    std::string note;              // shown below the story
    std::vector<std::string> run;  // shell command lines, one after the other
    std::map<std::string, std::optional<std::string>> files;  // besides the seeded; none: absent
    std::map<std::string, std::string> environment;
    LocalSettings local_settings;
    Scripts local;
    Scripts cloud;
    CloudSettings cloud_settings;
    std::set<std::string> refuse;   // "local", "tfa", "store", "time": nothing listens there
    std::set<std::string> daemons;  // tinyproxy, nginx, squid, squid-with-password, swift
    std::map<std::string, bool> addresses = {{"127.0.0.1", true}};  // the cloud's; false: silent
    std::string proxy_address = "127.0.0.1";                        // where the proxy listens
    std::vector<ScriptedReply> proxy_replies;         // of a fake proxy; none: there is none
    std::vector<std::string> signatures = {"exact"};  // of swift's upload URLs, in order
    std::map<std::string, std::string> dns;  // names only a DNS server on 127.0.0.1:53 knows
    bool verifying = false;                  // for a kdump that verifies the cloud
    bool identity = true;                    // CRT and KEY lie in the working directory
    bool real_sleep = false;
    bool unordered = false;     // the requests come in any order
    int stop_after_sleeps = 0;  // 0: never
};

// Reads one scenario from JSON text. Throws std::runtime_error that names the file, the field and
// what is allowed there.
Scenario read_scenario(const std::string &name, const std::string &file, const std::string &text);

// The scenario of that name among the shipped ones, or the one in that file.
Scenario load_scenario(const std::string &name_or_file);

// Names of the shipped scenarios, sorted; and the folder they lie in.
std::vector<std::string> shipped_scenarios();
std::string scenario_folder();

}  // namespace world
