/*
 * Where the body of a reply goes: nowhere, to the end of a file, or into a text that grows in
 * memory.
 */
#ifndef CLOUDAGENT_CLOUD_HTTP_HTTP_REPLY_H
#define CLOUDAGENT_CLOUD_HTTP_HTTP_REPLY_H

#include <stddef.h>
#include <stdint.h>

#include "log/c_api.h"

CLOUD_API_BEGIN

/* What is done with the bytes of a reply. */
enum {
    HTTP_REPLY_DISCARD = 0, /* dropped */
    HTTP_REPLY_FILE = 1,    /* appended to a file, opened anew for each chunk */
    HTTP_REPLY_MEMORY = 2   /* collected as a text */
};

/* One per request, owned by the caller. A memory record starts as {HTTP_REPLY_MEMORY, NULL, 0}. */
typedef struct HttpReply {
    uint32_t mode; /* HTTP_REPLY_...; any other value discards */
    char *data; /* memory: the NUL-terminated text, null before the first byte, free() it after the
                   transfer; file: path of the file to append to */
    uint32_t size; /* memory: bytes of text plus one for the NUL, 0 while data is null */
} HttpReply;

/*
 * A libcurl write callback (CURLOPT_WRITEFUNCTION); its CURLOPT_WRITEDATA is the HttpReply.
 *
 * Takes item_size * item_count bytes of chunk. Returns the bytes taken (memory, discard), or the
 * items written (file; all bytes when the file cannot be opened). A null record is logged and the
 * chunk dropped. When the text cannot grow, that is logged, the text is freed, the record is empty
 * and the result is 0, which makes libcurl end the transfer.
 */
size_t http_reply_write(char *chunk, size_t item_size, size_t item_count,
                        void *record) CLOUD_NOEXCEPT;

CLOUD_API_END

#endif
