/*
 * A run as plain text, the same at every repetition: the content of a scenario's .expected file.
 * Stamps are cut, long runs of one character are written <A*500>,
 * and bytes that equal a file of the device are named by it.
 */
#pragma once

#include <string>

#include "virtual_device/device_run.h"

namespace world {

std::string expected_text(const Outcome &outcome);

// Bytes in few words: quoted if short and printable, the name of a file in `known` if equal to it,
// else their number.
std::string describe_bytes(uint64_t size, const std::string &sha256, const std::string &content,
                           const FileTree &known);

// Printable and short: control bytes as \xNN, long runs of one character as <A*500>.
std::string legible(const std::string &text);

}  // namespace world
