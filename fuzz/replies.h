/*
 * Answers for libcurl: no transfer leaves the process; the next block of the input answers each.
 *
 *   !7            the transfer fails with libcurl's code 7; the rest of the line arrives before
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
    std::string body;  // or the uploaded file
    int code;          // libcurl's result
    long status;       // 0 if the transfer failed
};

// The blocks of `input`, which must outlive the transfers, answer them; after its end `last`
// answers each. Forgets earlier requests.
void answer_with(Input &input, std::string_view last = "!7");

// Everything transferred since answer_with.
const std::vector<Request> &requests();

// Whether all handles and header lists have been freed.
bool all_released();

}  // namespace fuzz
