#include "fleet_report.h"

#include <fmt/format.h>

#include <algorithm>

namespace world {
namespace {

constexpr int kWidth = 760;
constexpr int kHeight = 260;
constexpr int kLeft = 50;
constexpr int kBottom = 220;
constexpr int kTop = 30;

int peak(const std::vector<FleetSecond> &seconds, int FleetSecond::*member) {
    int most = 0;
    for (const FleetSecond &second : seconds)
        most = std::max(most, second.*member);
    return most;
}

std::string bar(double x, double width, int count, int above, int most, const char *colour) {
    const double unit = static_cast<double>(kBottom - kTop) / std::max(most, 1);
    return fmt::format(
        "<rect x=\"{:.1f}\" y=\"{:.1f}\" width=\"{:.1f}\" height=\"{:.1f}\" fill=\"{}\"/>\n", x,
        kBottom - (count + above) * unit, width, count * unit, colour);
}

std::string label(double x, double y, const std::string &text, const char *anchor = "middle") {
    return fmt::format("<text x=\"{:.0f}\" y=\"{:.0f}\" text-anchor=\"{}\">{}</text>\n", x, y,
                       anchor, text);
}

}  // namespace

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

std::string fleet_plot(const FleetOptions &options, const FleetOutcome &outcome) {
    const std::vector<FleetSecond> seconds = by_second(outcome);
    const int most = std::max(peak(seconds, &FleetSecond::cut), peak(seconds, &FleetSecond::asked));
    const double step =
        static_cast<double>(kWidth - kLeft - 10) / static_cast<double>(seconds.size());
    std::string svg = fmt::format(
        "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"{0}\" height=\"{1}\" viewBox=\"0 0 {0} "
        "{1}\" "
        "font-family=\"sans-serif\" font-size=\"12\">\n<rect width=\"{0}\" height=\"{1}\" "
        "fill=\"white\"/>\n",
        kWidth, kHeight);
    for (size_t i = 0; i < seconds.size(); ++i) {
        const double x = kLeft + static_cast<double>(i) * step;
        svg += bar(x, step * 0.9, seconds[i].cut, 0, most, "#c0392b");
        svg += bar(x, step * 0.9, seconds[i].asked, seconds[i].cut, most, "#2471a3");
        if (i % 5 == 0)
            svg += label(x, kBottom + 16, fmt::format("{} s", i));
    }
    svg += fmt::format("<path d=\"M{0} {1}V{2}H{3}\" fill=\"none\" stroke=\"black\"/>\n", kLeft,
                       kTop, kBottom, kWidth - 10);
    svg += label(kLeft - 6, kTop + 4, std::to_string(most), "end") +
           label(kLeft - 6, kBottom, "0", "end");
    svg += label(kWidth / 2.0, 18,
                 fmt::format("TFA requests a second: {} devices started over {} s, outage of {} s",
                             options.devices, options.spread, options.outage));
    svg += label(kWidth / 2.0, kHeight - 6, "red: cut by the outage; blue: answered");
    return svg + "</svg>\n";
}

}  // namespace world
