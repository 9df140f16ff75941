/*
 * Folders of the machine that a private world shows: the project, its build, and those that
 * Options::keep names. Each has its own path below /run/world, without blanks: the world is the
 * same wherever they lie on the machine.
 */
#pragma once

#include <string>
#include <vector>

namespace world {

// Translates a path of the machine into the path in the world, also as part of a longer text such
// as a command line. Other texts stay as they are, as all do outside of a world. spawn() translates
// the words of its commands.
std::string inside(const std::string &text);

// Translates a program's arguments in place.
void move_inside(char **arguments);

// A folder's path on the machine, and in the world.
struct ShownFolder {
    std::string path;
    std::string place;
};

inline constexpr const char *kShownDir = "/run/world/shown/";

// Makes inside() translate these folders, in every process of the world.
void record_shown_folders(std::vector<ShownFolder> folders);

}  // namespace world
