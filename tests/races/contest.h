// Who competes for which marker, and what one round of it must come to.
#pragma once

#include <string>
#include <vector>

#include "console.h"
#include "held_cloud.h"

// What one run is started with, and what it sends when it gets through.
struct Runner {
    std::vector<std::string> arguments;
    std::vector<std::string> dumps;  // removed when they have been sent
    bool sends_archive = false;      // of a folder that stays
    bool sends_nothing = false;      // asks for a URL, and no more
};

struct Contest {
    std::string name;
    std::string marker;
    std::vector<Runner> runners;  // take turns when there are more runs than runners
};

const std::vector<Contest> &contests();

// One round of so many runs; what was wrong with it, empty when nothing was.
std::string play(const Contest &contest, std::size_t runs, const std::string &kdump,
                 HeldCloud &cloud, world::Console &console);
