/// @file
/// JSON documents: parse, read, build, print, and the JSON-RPC 2.0 envelope.
///
/// Ownership: a document is a tree of nodes owned by its root. Whoever parsed or created the root
/// frees it with deleteJson, which frees the whole tree. Nodes and texts that getters return point
/// into the document and die with it. A node given to an "add" function belongs to the document
/// once added; keys and texts are copied. The caller free()s printed texts.
///
/// Null: every pointer may be null. Getters then return their default, "add" functions add nothing,
/// and a null found flag is not written.
///
/// Keys: compared without regard to ASCII letter case; of several members that match, the first one
/// counts.
///
/// Memory: nodes and texts come from cJSON's allocator, hooks included. When it fails, "create",
/// "parse", "print" and "duplicate" functions return null and "add" functions add nothing; only
/// initJsonRpcObject aborts the process.
///
/// Depth: parsing refuses more than 1000 nested arrays and objects, as cJSON does; printing and
/// duplicating refuse more than 10000. Deleting has no limit.
///
/// No locks: cJSON's error position and hooks are process-wide, and a document belongs to one
/// thread.
#pragma once

#include "../base/c_api.h"

CLOUD_API_BEGIN

/// Kind codes, and a flag for nodes that own neither child nor valuestring.
enum {
    JSON_KIND_FALSE = 0,       ///< the value false
    JSON_KIND_TRUE = 1,        ///< the value true
    JSON_KIND_NULL = 2,        ///< the value null
    JSON_KIND_NUMBER = 3,      ///< a double, with its int beside it
    JSON_KIND_STRING = 4,      ///< a text
    JSON_KIND_ARRAY = 5,       ///< elements, below child
    JSON_KIND_OBJECT = 6,      ///< members, below child
    JSON_KIND_UINT32 = 7,      ///< an unsigned 32-bit number; parsing never makes one
    JSON_KIND_UINT64 = 8,      ///< an unsigned 64-bit number
    JSON_REFERENCE_FLAG = 256  ///< added to a code: child and valuestring are not owned
};

/// A value, with its place among its siblings. Fields that a kind does not use are zero.
typedef struct JsonNode {
    struct JsonNode *next;    ///< next element or member, null for the last
    struct JsonNode *prev;    ///< previous element or member, null for the first
    struct JsonNode *child;   ///< first element or member of an array or object
    int32_t type;             ///< kind code, with JSON_REFERENCE_FLAG added or not
    char *valuestring;        ///< text of a string, owned
    int32_t valueint;         ///< number: as an int; uint32: its bits; parsed true: 1
    double valuedouble;       ///< value of a number
    uint64_t valueulonglong;  ///< value of a uint64
    char *string;             ///< name of an object's member, owned
} JsonNode;

/* ---- Parse and free ---- */

/// Parses the first JSON value of a NUL-terminated text and ignores the rest. Numbers become
/// JSON_KIND_NUMBER, with valueint limited to the range of an int.
///
/// Returns the document, for deleteJson; null when the text is not JSON, begins with a byte-order
/// mark, or is null. A backslash and "u" take four hexadecimal digits; of zeros they end the
/// text for its readers. After a failure cJSON_GetErrorPtr() points at the offending byte of the
/// text (unchanged for a null text).
JsonNode *parseJsonText(const char *text) CLOUD_NOEXCEPT;

/// Does the same, but reads every number as JSON_KIND_UINT64: at most one leading zero, then digits
/// that begin with 1 to 9, modulo 2^64. A sign, fraction, exponent or further zero does not belong
/// to the number: in an array or object it makes the parse fail; at the top level it is ignored
/// with the rest (-5, 1.5 and 007 read as 0, 1 and 0).
JsonNode *parseJsonTextLongLongUint(const char *text) CLOUD_NOEXCEPT;

/// Frees a tree and the siblings that follow its root, but not what a reference node refers to.
void deleteJson(JsonNode *document) CLOUD_NOEXCEPT;

/* ---- Navigate ---- */

/// The member of that name, or null.
JsonNode *getJsonObjectForKey(const JsonNode *object, const char *key) CLOUD_NOEXCEPT;

/// The kind code, without the reference flag; 0 (the code of false) for null.
int getJsonType(const JsonNode *node) CLOUD_NOEXCEPT;

/// The number of elements or members.
int getJsonArraySize(const JsonNode *array) CLOUD_NOEXCEPT;

/// The element at an index from 0; null beyond the end; the first for a negative index.
JsonNode *getJsonArrayItem(const JsonNode *array, int index) CLOUD_NOEXCEPT;

/// The first element or member, or null.
JsonNode *getJsonChild(const JsonNode *node) CLOUD_NOEXCEPT;

/// The next sibling, or null.
JsonNode *getJsonNext(const JsonNode *node) CLOUD_NOEXCEPT;

/// The fields valuestring, valueint and valuedouble of any kind; null, 0 and 0.0 for a null node.
char *getJsonStringValue(const JsonNode *node) CLOUD_NOEXCEPT;
int getJsonIntValue(const JsonNode *node) CLOUD_NOEXCEPT;        ///< The valueint.
double getJsonDoubleValue(const JsonNode *node) CLOUD_NOEXCEPT;  ///< The valuedouble.

/* ---- Read members ---- */

/// The text of a string member; null when it is missing or of another kind.
char *getJsonStringValueForKey(const JsonNode *object, const char *key) CLOUD_NOEXCEPT;

/// The valueint of a JSON_KIND_NUMBER member, with *found set to 1; 0 with *found set to 0 when it
/// is missing or of another kind.
int getJsonIntValueForKey(const JsonNode *object, const char *key, int *found) CLOUD_NOEXCEPT;
/// The same for true (1) and false (0).
int getJsonBoolValueForKey(const JsonNode *object, const char *key, int *found) CLOUD_NOEXCEPT;
/// The same for JSON_KIND_UINT64. A miss is also reported on standard output.
uint64_t getJsonLongLongUintValueForKey(const JsonNode *object, const char *key,
                                        int *found) CLOUD_NOEXCEPT;

/// The valuedouble of a member of any kind; 0.0 when it is missing.
double getJsonDoubleValueForKey(const JsonNode *object, const char *key) CLOUD_NOEXCEPT;

/* ---- Build ---- */

/// A new empty object or array, for deleteJson or to be added elsewhere.
JsonNode *createJsonObject(void) CLOUD_NOEXCEPT;
JsonNode *createJsonArray(void) CLOUD_NOEXCEPT;  ///< The array.

/// Adds a node, which must belong to no document, as the last member or element. In an object a
/// copy of the key replaces its name; key may be that old name. When nothing is added (a null
/// argument, a node added to itself, no memory) the node is unchanged and remains the caller's.
void addJsonItemToObject(JsonNode *object, const char *key, JsonNode *node) CLOUD_NOEXCEPT;
void addJsonItemToArray(JsonNode *array, JsonNode *node) CLOUD_NOEXCEPT;  ///< In an array.

/// Adds a string with a copy of the text as the last member; nothing for a null text.
void addJsonStringToObject(JsonNode *object, const char *key, const char *text) CLOUD_NOEXCEPT;

/// Adds a JSON_KIND_NUMBER as the last member; valueint is truncated to the range of an int.
void addJsonIntToObject(JsonNode *object, const char *key, int32_t value) CLOUD_NOEXCEPT;
/// Does the same with a double.
void addJsonDoubleToObject(JsonNode *object, const char *key, double value) CLOUD_NOEXCEPT;

/// Adds true for a value other than 0, else false, as the last member.
void addJsonBoolToObject(JsonNode *object, const char *key, int value) CLOUD_NOEXCEPT;

/// Adds a JSON_KIND_UINT32 as the last member.
void addJsonUlongToObject(JsonNode *object, const char *key, uint32_t value) CLOUD_NOEXCEPT;
/// Adds a JSON_KIND_UINT64 as the last member.
void addJsonLongLongUintToObject(JsonNode *object, const char *key, uint64_t value) CLOUD_NOEXCEPT;

/// A new array of count numbers or strings, the texts copied; empty for a count of 0 or below. Null
/// when values, or one of the texts, is null.
JsonNode *createJsonIntArray(const int *values, int count) CLOUD_NOEXCEPT;
JsonNode *createJsonDoubleArray(const double *values, int count) CLOUD_NOEXCEPT;  ///< Of doubles.
JsonNode *createJsonStringArray(const char **texts, int count) CLOUD_NOEXCEPT;    ///< Of strings.

/* ---- Composite operations ---- */

/// A new object that holds "jsonrpc" : "2.0". Without memory for it, an assertion aborts the
/// process.
JsonNode *initJsonRpcObject(void) CLOUD_NOEXCEPT;

/// Adds a copy of the source's string of that key to the destination, as its last member.
void copyJsonStringValueForKey(const JsonNode *source, JsonNode *destination,
                               const char *key) CLOUD_NOEXCEPT;

/// Adds an array of strings to the object under the key: for each element of source its printed
/// text without double quotes and backslashes. An element whose text cannot be allocated is left
/// out.
///
/// Returns null. For a null source, adds an empty array and returns another one, which the caller
/// deletes.
JsonNode *addJsonStringArrayToObject(JsonNode *object, const char *key,
                                     const JsonNode *source) CLOUD_NOEXCEPT;

/// Compares the valueint of a member of one object with that of another: 0 equal, 1 different, 2
/// when one of them is missing or not a JSON_KIND_NUMBER.
int compareJsonIntValueForKey(const JsonNode *object_a, const char *key_a, const JsonNode *object_b,
                              const char *key_b) CLOUD_NOEXCEPT;
/// The same for true and false.
int compareJsonBoolValueForKey(const JsonNode *object_a, const char *key_a,
                               const JsonNode *object_b, const char *key_b) CLOUD_NOEXCEPT;

/* ---- Print and duplicate ---- */

/// The text of a node and its descendants, without its name and siblings: one member per line,
/// indented by tabs, or without white space. The caller free()s it. Null for a node of unknown
/// kind.
char *printJson(const JsonNode *node) CLOUD_NOEXCEPT;
char *printJsonUnformatted(const JsonNode *node) CLOUD_NOEXCEPT;  ///< Without white space.

/// A copy of a node without its siblings, for deleteJson; with its descendants if recurse is not 0.
/// Copies kind, valueint, valuedouble, text and name: a copied uint64 is 0, and a copied reference
/// is a node of its own.
JsonNode *duplicateJson(const JsonNode *node, int recurse) CLOUD_NOEXCEPT;

CLOUD_API_END
