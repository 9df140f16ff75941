/*
 * In place of libcurl: no transfer leaves the process, each is answered by the next block of the
 * input. Linked into every target, ahead of the library.
 *
 *   !7            the transfer fails with libcurl's code 7; what follows on the line arrives before
 *   #403 text     the reply has this status and the body "text"
 *   text          the reply has the status 200 and this body; an empty block is an empty body
 *
 * Bodies arrive in chunks of 1, 16, 256... bytes.
 */
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "fuzz.h"

namespace fuzz {

struct Request {
    std::string method;
    std::string url;
    std::string proxy;
    std::string body;  // also the file, of an upload
    int code;          // libcurl's, as the caller learnt it
    long status;       // 0 when the transfer failed
};

// From now on, transfers are answered by the blocks of `input`, which must stay; behind its end,
// each by `last`. Forgets the requests so far.
void answer_with(Input &input, std::string_view last = "!7");

// Everything transferred since answer_with.
const std::vector<Request> &requests();

// Nothing of libcurl's is left: handles, header lists.
bool all_released();

}  // namespace fuzz
