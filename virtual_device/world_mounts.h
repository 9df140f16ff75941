/* The file tree of the private world; see private_world.h. */
#pragma once

#include <string>
#include <vector>

namespace world {

// Builds the tree. Call it in new mount and pid namespaces; throws std::system_error naming the
// step that failed. `keep` names folders that stay reachable under their own paths.
void build_tree(const std::vector<std::string> &keep);

// In a mount namespace of its own inside the world: gives the caller a fresh /tmp, /mnt and
// working directory, so that several devices can share one loopback. `keep` as above.
void renew_tree(const std::vector<std::string> &keep);

// Fills the parts of the tree that reset() renews.
void seed_tree();

// Removes what a directory of the world holds, and never leaves its file system: folders of the
// machine that are kept reachable below it are left alone.
void clear_directory(const std::string &path);

}  // namespace world
