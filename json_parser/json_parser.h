/*
 * JSON documents: parse, read, build, print, and the JSON-RPC 2.0 envelope.
 *
 * Ownership: a document is a tree of nodes owned by its root. Whoever parsed or created the root
 * frees it with deleteJson, which frees everything below. Nodes and texts that getters return point
 * into the document and die with it. A node given to an "add" function belongs to the document once
 * added; keys and texts are copied. Printed texts are the caller's and are released with free().
 *
 * Null: every function takes null for every pointer. What is null holds nothing: a getter answers
 * with its default, an "add" function adds nothing, a found flag is not written.
 *
 * Keys: compared without regard to ASCII letter case; of several members that match, the first one
 * counts.
 *
 * Memory: nodes and texts come from cJSON's allocator, hooks included. Where it fails, a "create",
 * "parse", "print" or "duplicate" function returns null and an "add" function adds nothing; only
 * initJsonRpcObject ends the process.
 *
 * Depth: parsing refuses arrays and objects nested deeper than 1000, as cJSON does; printing and
 * duplicating refuse those deeper than 10000. Deleting knows no limit.
 *
 * No locks: cJSON's error position and hooks are process-wide, and a document belongs to one
 * thread.
 */
#ifndef CLOUDAGENT_JSON_PARSER_JSON_PARSER_H
#define CLOUDAGENT_JSON_PARSER_JSON_PARSER_H

#include <stdint.h>

#include "log/c_api.h"

CLOUD_API_BEGIN

/* Kind codes, and the flag added to that of a node which owns neither child nor valuestring. */
enum {
    JSON_KIND_FALSE = 0,      /* the value false */
    JSON_KIND_TRUE = 1,       /* the value true */
    JSON_KIND_NULL = 2,       /* the value null */
    JSON_KIND_NUMBER = 3,     /* a double, with its int beside it */
    JSON_KIND_STRING = 4,     /* a text */
    JSON_KIND_ARRAY = 5,      /* elements, below child */
    JSON_KIND_OBJECT = 6,     /* members, below child */
    JSON_KIND_UINT32 = 7,     /* an unsigned 32-bit number; parsing never makes one */
    JSON_KIND_UINT64 = 8,     /* an unsigned 64-bit number */
    JSON_REFERENCE_FLAG = 256 /* added: child and valuestring belong to another node */
};

/* A value, with its place among its siblings. Fields that a kind does not use are zero. */
typedef struct JsonNode {
    struct JsonNode *next;  /* next element or member, null for the last */
    struct JsonNode *prev;  /* previous element or member, null for the first */
    struct JsonNode *child; /* first element or member of an array or object */
    int32_t type;           /* kind code, with JSON_REFERENCE_FLAG added or not */
    char *valuestring;      /* text of a string, owned */
    int32_t valueint;       /* number: truncated to an int; uint32: its bits; 1 for a parsed true */
    double valuedouble;     /* value of a number */
    uint64_t valueulonglong; /* value of a uint64 */
    char *string;            /* name of an object's member, owned */
} JsonNode;

/* ---- Parse and free ---- */

/*
 * Parses the first JSON value of a NUL-terminated text; what follows it is ignored. Numbers become
 * JSON_KIND_NUMBER, valueint being kept within the int's range.
 *
 * Returns the document, for deleteJson; null when the text is no JSON, begins with a byte-order
 * mark, or is null. cJSON_GetErrorPtr() then points at the offending byte of the text (unchanged
 * for a null text).
 */
JsonNode *parseJsonText(const char *text) CLOUD_NOEXCEPT;

/*
 * The same, with every number read as a JSON_KIND_UINT64: at most one leading zero, then the digits
 * behind it if they begin with 1 to 9, wrapping past 2^64 - 1. A sign, a fraction, an exponent or
 * another zero is no part of the number: inside an array or object it makes the parse fail, at the
 * top it is ignored like all that follows (-5, 1.5 and 007 read 0, 1 and 0).
 */
JsonNode *parseJsonTextLongLongUint(const char *text) CLOUD_NOEXCEPT;

/* Frees a whole tree, and the siblings that follow its root. Reference nodes keep what they refer
 * to. */
void deleteJson(JsonNode *document) CLOUD_NOEXCEPT;

/* ---- Navigate ---- */

/* The member of that name, or null. */
JsonNode *getJsonObjectForKey(const JsonNode *object, const char *key) CLOUD_NOEXCEPT;

/* The kind code, without the reference flag; 0 (the code of false) for null. */
int getJsonType(const JsonNode *node) CLOUD_NOEXCEPT;

/* The number of elements or members. */
int getJsonArraySize(const JsonNode *array) CLOUD_NOEXCEPT;

/* The element at an index counted from 0; null past the end; the first one for a negative index. */
JsonNode *getJsonArrayItem(const JsonNode *array, int index) CLOUD_NOEXCEPT;

/* The first element or member, or null. */
JsonNode *getJsonChild(const JsonNode *node) CLOUD_NOEXCEPT;

/* The next sibling, or null. */
JsonNode *getJsonNext(const JsonNode *node) CLOUD_NOEXCEPT;

/* The bare fields valuestring, valueint and valuedouble, whatever the kind; null, 0 and 0.0 for
 * null. */
char *getJsonStringValue(const JsonNode *node) CLOUD_NOEXCEPT;
int getJsonIntValue(const JsonNode *node) CLOUD_NOEXCEPT;
double getJsonDoubleValue(const JsonNode *node) CLOUD_NOEXCEPT;

/* ---- Read members ---- */

/* The text of a string member; null when it is missing or of another kind. */
char *getJsonStringValueForKey(const JsonNode *object, const char *key) CLOUD_NOEXCEPT;

/*
 * The value of a member, with *found set to 1; 0 with *found set to 0 when it is missing or of
 * another kind than, in turn, JSON_KIND_NUMBER (its valueint), true or false (1 or 0), and
 * JSON_KIND_UINT64. The last one also reports a miss on standard output:
 * "\ngetJsonLongLongUintValueForKey IntValue of %s not found\n" with the key.
 */
int getJsonIntValueForKey(const JsonNode *object, const char *key, int *found) CLOUD_NOEXCEPT;
int getJsonBoolValueForKey(const JsonNode *object, const char *key, int *found) CLOUD_NOEXCEPT;
uint64_t getJsonLongLongUintValueForKey(const JsonNode *object, const char *key,
                                        int *found) CLOUD_NOEXCEPT;

/* The valuedouble of a member of any kind; 0.0 when it is missing. */
double getJsonDoubleValueForKey(const JsonNode *object, const char *key) CLOUD_NOEXCEPT;

/* ---- Build ---- */

/* A new empty object or array, for deleteJson or to be added elsewhere. */
JsonNode *createJsonObject(void) CLOUD_NOEXCEPT;
JsonNode *createJsonArray(void) CLOUD_NOEXCEPT;

/*
 * Adds a node of no other document as the last member or element. In an object it takes a copy of
 * the key as its name, in place of the one it had; key may be that old name. When nothing is added
 * (a null argument, a node added to itself, no memory) the node is unchanged and stays the
 * caller's.
 */
void addJsonItemToObject(JsonNode *object, const char *key, JsonNode *node) CLOUD_NOEXCEPT;
void addJsonItemToArray(JsonNode *array, JsonNode *node) CLOUD_NOEXCEPT;

/* Adds a string with a copy of the text as the last member; nothing for a null text. */
void addJsonStringToObject(JsonNode *object, const char *key, const char *text) CLOUD_NOEXCEPT;

/* Adds a JSON_KIND_NUMBER as the last member; valueint is the value truncated, within the int's
 * range. */
void addJsonIntToObject(JsonNode *object, const char *key, int32_t value) CLOUD_NOEXCEPT;
void addJsonDoubleToObject(JsonNode *object, const char *key, double value) CLOUD_NOEXCEPT;

/* Adds true for a value other than 0, else false, as the last member. */
void addJsonBoolToObject(JsonNode *object, const char *key, int value) CLOUD_NOEXCEPT;

/* Adds a JSON_KIND_UINT32, or a JSON_KIND_UINT64, as the last member. */
void addJsonUlongToObject(JsonNode *object, const char *key, uint32_t value) CLOUD_NOEXCEPT;
void addJsonLongLongUintToObject(JsonNode *object, const char *key, uint64_t value) CLOUD_NOEXCEPT;

/*
 * A new array of count numbers or strings, the texts copied; empty for a count of 0 or below. Null
 * when values, or one of the texts, is null.
 */
JsonNode *createJsonIntArray(const int *values, int count) CLOUD_NOEXCEPT;
JsonNode *createJsonDoubleArray(const double *values, int count) CLOUD_NOEXCEPT;
JsonNode *createJsonStringArray(const char **texts, int count) CLOUD_NOEXCEPT;

/* ---- Composite operations ---- */

/* A new object that holds "jsonrpc" : "2.0". Without memory for the object the process ends by
 * assertion. */
JsonNode *initJsonRpcObject(void) CLOUD_NOEXCEPT;

/* Adds the source's string of that key to the destination under the same key, as its last member.
 */
void copyJsonStringValueForKey(const JsonNode *source, JsonNode *destination,
                               const char *key) CLOUD_NOEXCEPT;

/*
 * Adds an array of strings to the object under the key: one for each element of source, holding its
 * printed text without '"' and '\' bytes; an element without memory for its text is left out.
 *
 * Returns null. For a null source the array added is empty, and a second empty array, attached
 * nowhere, is returned, which the caller deletes.
 */
JsonNode *addJsonStringArrayToObject(JsonNode *object, const char *key,
                                     const JsonNode *source) CLOUD_NOEXCEPT;

/*
 * Compares a member of one object with a member of another: 0 equal, 1 different, 2 when one of
 * them is missing or not a JSON_KIND_NUMBER (compared by valueint), or not true or false.
 */
int compareJsonIntValueForKey(const JsonNode *object_a, const char *key_a, const JsonNode *object_b,
                              const char *key_b) CLOUD_NOEXCEPT;
int compareJsonBoolValueForKey(const JsonNode *object_a, const char *key_a,
                               const JsonNode *object_b, const char *key_b) CLOUD_NOEXCEPT;

/* ---- Print and duplicate ---- */

/*
 * The text of a node and all below it, for free(): with one member a line, indented by tabs, or
 * without any white space. Its siblings and its own name are no part of it. Null for a node of
 * unknown kind.
 */
char *printJson(const JsonNode *node) CLOUD_NOEXCEPT;
char *printJsonUnformatted(const JsonNode *node) CLOUD_NOEXCEPT;

/*
 * A copy of a node without its siblings, with all below it when recurse is not 0, for deleteJson.
 * Kind, valueint, valuedouble, text and name are copied; a copied uint64 reads 0, and a copy is
 * never a reference.
 */
JsonNode *duplicateJson(const JsonNode *node, int recurse) CLOUD_NOEXCEPT;

CLOUD_API_END

#endif
