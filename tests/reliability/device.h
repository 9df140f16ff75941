/* The files of the device under test: laid out before a run, looked at after it. */
#pragma once

#include <map>
#include <string>

#include "kinds.h"

namespace reliability {

// Path -> content of every file under the folders that programs of a device may write to.
using Files = std::map<std::string, std::string>;

// What lies on a device on which nothing has run yet. The client's certificate and key are there.
const Files &fresh_files(const Kind &kind);

Files look();

// Makes the device's files `wanted`, knowing that they are `present`.
void restore(const Files &present, const Files &wanted);

}  // namespace reliability
