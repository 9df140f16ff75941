/* The files of the device under test: laid out before a run, looked at after it. */
#pragma once

#include <map>
#include <string>

#include "testing/kinds.h"

namespace reliability {

// Path -> content of every file under the folders that programs of a device may write to.
using Files = std::map<std::string, std::string>;

// The files of a device on which nothing has run yet; the client's certificate and key are there.
const Files &fresh_files(const world::Kind &kind);

Files look();

// Makes the device's files `wanted`, knowing that they are `present`.
void restore(const Files &present, const Files &wanted);

}  // namespace reliability
