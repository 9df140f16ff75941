// The device's own management service on the loopback address: from a resource to its payload.
#ifndef CLOUDAGENT_CLOUD_HTTP_LOCAL_SERVICE_H
#define CLOUDAGENT_CLOUD_HTTP_LOCAL_SERVICE_H

#include "json_parser/owned_json.h"

#define LOCAL_SERVICE "http://127.0.0.1:8000/api/"

struct LocalPayload {
    OwnedJson document;          // owns what object points to
    JsonNode *object = nullptr;  // null when the resource could not be read
};

// GETs a resource and takes the object named member out of its "restful_res" envelope. A reply
// without the envelope is logged with site, the number of the reading place; every other failure is
// silent.
LocalPayload read_local_payload(const char *url, const char *member, int site) noexcept;

#endif
