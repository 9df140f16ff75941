// Who competes for which marker, and what one round of it must come to.
#pragma once

#include <string>
#include <vector>

#include "console.h"
#include "held_cloud.h"
#include "tests/reliability/kinds.h"

struct Contest {
    std::string name;
    std::string marker;
    std::vector<reliability::Kind> kinds;  // take turns
};

const std::vector<Contest> &contests();

// One round of so many runs; what was wrong with it, empty when nothing was.
std::string play(const Contest &contest, std::size_t runs, const std::string &kdump,
                 HeldCloud &cloud, world::Console &console);
