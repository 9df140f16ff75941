// The kinds that compete for a marker, and the result that one round must have.
#pragma once

#include <string>
#include <vector>

#include "testing/console.h"
#include "testing/fake_cloud.h"
#include "testing/kinds.h"

struct Contest {
    std::string name;
    std::string marker;
    std::vector<world::Kind> kinds;  // take turns
};

// One for each kind, and one for all kinds that share a marker.
std::vector<Contest> contests();

// The surroundings that all races share.
struct Arena {
    Arena();

    world::Gate gate;
    world::FakeCloud fake;
    world::Console console;
};

// One round of so many runs; a complaint, or empty.
std::string play(const Contest &contest, std::size_t runs, const std::string &kdump, Arena &arena);
