// Reads resources of the device's own management service.
#pragma once

#include "json_parser/owned_json.h"

#define LOCAL_SERVICE "http://127.0.0.1:8000/api/"

namespace cloudagent {

struct LocalPayload {
    OwnedJson document;          // owns what object points to
    JsonNode *object = nullptr;  // null when the resource could not be read
};

// GETs a resource and finds the object named member in its "restful_res" envelope. A missing
// envelope is logged with id; every other failure is silent.
LocalPayload read_local_payload(const char *url, const char *member, int id) noexcept;

}  // namespace cloudagent
