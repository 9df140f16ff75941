/// The destination of a reply's body: none, a file, or a text in memory. @file
#pragma once

#include "../base/c_api.h"

CLOUD_API_BEGIN

/// Modes of an HttpReply.
enum {
    HTTP_REPLY_DISCARD = 0,  ///< dropped
    HTTP_REPLY_FILE = 1,     ///< appended to a file, opened anew for each chunk
    HTTP_REPLY_MEMORY = 2    ///< collected as a text
};

/// The caller owns one per request, for memory mode {HTTP_REPLY_MEMORY, NULL, 0} at the start.
typedef struct HttpReply {
    uint32_t mode;  ///< HTTP_REPLY_...; any other value discards
    /// memory: the NUL-terminated text, null before the first byte, free() it after the transfer;
    /// file: path of the file to append to
    char *data;
    uint32_t size;  ///< memory: bytes of text plus one for the NUL, 0 while data is null
} HttpReply;

/// A libcurl write callback (CURLOPT_WRITEFUNCTION); its CURLOPT_WRITEDATA is the HttpReply.
///
/// Takes item_size * item_count bytes of chunk. Returns the number of bytes, or in file mode the
/// number of items written (of bytes when the file cannot be opened). A null record is logged and
/// the chunk dropped. When the text cannot grow, that is logged, the text freed, the record emptied
/// and 0 returned, which makes libcurl abort the transfer.
size_t http_reply_write(char *chunk, size_t item_size, size_t item_count,
                        void *record) CLOUD_NOEXCEPT;

CLOUD_API_END
