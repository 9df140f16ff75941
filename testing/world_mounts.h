/* The file tree of the private world; see private_world.h. */
#pragma once

#include <string>
#include <vector>

namespace world {

// Builds the tree. Call it in new mount and pid namespaces; throws std::system_error naming the
// step that failed. `keep` names folders to show, besides the project's.
void build_tree(const std::vector<std::string> &keep);

// In a mount namespace of its own inside the world: gives the caller a fresh /tmp, /mnt and
// working directory, so that several devices can share one loopback.
void renew_tree();

// Fills the parts of the tree that reset() renews.
void seed_tree();

// Removes what a directory of the world holds, and never leaves its file system.
void clear_directory(const std::string &path);

}  // namespace world
