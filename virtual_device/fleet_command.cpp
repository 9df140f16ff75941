/* virtual_device fleet: a table by second, a record, a plot. */
#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "virtual_device/commands.h"

namespace world {
namespace {

struct FleetSecond {
    int cut = 0;      // connections that met the outage
    int asked = 0;    // requests to the TFA service
    int uploads = 0;  // requests to the store
};

int peak(const std::vector<FleetSecond> &seconds, int FleetSecond::*member) {
    int most = 0;
    for (const FleetSecond &second : seconds)
        most = std::max(most, second.*member);
    return most;
}

// Entry n: the requests that reached the cloud in second n.
std::vector<FleetSecond> by_second(const FleetOutcome &outcome) {
    std::vector<FleetSecond> seconds(static_cast<size_t>(outcome.seconds) + 1);
    for (const Exchange &exchange : outcome.exchanges) {
        FleetSecond &second = seconds.at(static_cast<size_t>(exchange.started));
        if (exchange.method.empty())
            ++second.cut;
        else if (exchange.service == "tfa")
            ++second.asked;
        else
            ++second.uploads;
    }
    return seconds;
}

std::string fleet_table(const FleetOptions &options, const FleetOutcome &outcome) {
    const std::vector<FleetSecond> seconds = by_second(outcome);
    std::string text = fmt::format(
        "{} devices, started over {} s; the cloud is out for {} s.\n\n"
        "second   cut by the outage   TFA requests   uploads\n",
        options.devices, options.spread, options.outage);
    for (size_t i = 0; i < seconds.size(); ++i)
        if (seconds[i].cut + seconds[i].asked + seconds[i].uploads > 0)
            text += fmt::format("{:6}   {:17}   {:12}   {:7}\n", i, seconds[i].cut,
                                seconds[i].asked, seconds[i].uploads);
    text += fmt::format(
        "\nPeak in one second: {} connections cut, {} TFA requests, {} uploads.\n"
        "Stored: {} dumps of {} bytes; still on their device: {}.\n",
        peak(seconds, &FleetSecond::cut), peak(seconds, &FleetSecond::asked),
        peak(seconds, &FleetSecond::uploads), outcome.stored.size(), options.bytes,
        outcome.dumps_left);
    return text;
}

nlohmann::json fleet_record(const FleetOptions &options, const FleetOutcome &outcome) {
    nlohmann::json record = {{"devices", options.devices},      {"spread", options.spread},
                             {"outage", options.outage},        {"bytes", options.bytes},
                             {"seconds", outcome.seconds},      {"stored", outcome.stored.size()},
                             {"dumps_left", outcome.dumps_left}};
    for (const Exchange &exchange : outcome.exchanges)
        record["requests"].push_back({{"service", exchange.service},
                                      {"device", exchange.client_certificate},
                                      {"started", exchange.started},
                                      {"ended", exchange.ended},
                                      {"status", exchange.status},
                                      {"mishap", exchange.mishap},
                                      {"bytes", exchange.body_size}});
    return record;
}

// For gnuplot.
std::string fleet_plot(const FleetOptions &options, const FleetOutcome &outcome) {
    std::string script = "$seconds << END\n";
    for (const FleetSecond &second : by_second(outcome))
        script += fmt::format("{} {}\n", second.cut, second.asked);
    script += fmt::format(R"(END
set terminal svg size 760,300 font "sans-serif,12" background "white"
set title "{} devices started over {} s, outage of {} s"
set xlabel "second"
set ylabel "TFA requests"
set border 3
set tics nomirror out
set key outside bottom center horizontal
set style fill solid
set boxwidth 0.9
set xrange [-1:]
set yrange [0:]
plot $seconds using 0:($1 + $2) with boxes linecolor rgb "#2471a3" title "answered", \
     "" using 0:1 with boxes linecolor rgb "#c0392b" title "cut by the outage"
)",
                          options.devices, options.spread, options.outage);
    return script;
}

}  // namespace

int run_fleet_command(FleetCommandOptions options) {
    const OutputFile json = open_output(options.json);
    const OutputFile plot = open_output(options.plot);
    options.fleet.kdump = enter_world(options.fleet.kdump);
    const FleetOutcome outcome = run_fleet(options.fleet);
    fmt::print("{}", fleet_table(options.fleet, outcome));
    if (json)
        fmt::print(json.get(), "{}\n", fleet_record(options.fleet, outcome).dump(2));
    if (plot)
        fmt::print(plot.get(), "{}", fleet_plot(options.fleet, outcome));
    const bool all = outcome.stored.size() + static_cast<size_t>(outcome.dumps_left) ==
                     static_cast<size_t>(options.fleet.devices);
    return all ? 0 : 1;
}

}  // namespace world
