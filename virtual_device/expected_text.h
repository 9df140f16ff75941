/*
 * A run as plain text that is the same at every repetition: what a scenario's .expected file holds
 * and what a run is compared with. Stamps are cut, long runs of one character are written <A*500>,
 * and bytes that equal a file of the device are named by it.
 */
#pragma once

#include <string>

#include "device_run.h"

namespace world {

std::string expected_text(const Outcome &outcome);

// What bytes are, in few words: quoted when short and printable, named when they are those of a
// file in `known`, else their number.
std::string describe_bytes(uint64_t size, const std::string &sha256, const std::string &content,
                           const FileTree &known);

// Printable and short: control bytes as \xNN, long runs of one character as <A*500>.
std::string legible(const std::string &text);

}  // namespace world
