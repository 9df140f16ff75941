// Files that hold one value as text: opened, read or written with one conversion, and closed at
// once.
#ifndef CLOUDAGENT_STATE_ONE_VALUE_FILE_H
#define CLOUDAGENT_STATE_ONE_VALUE_FILE_H

// Reads one conversion into value. False when the file cannot be opened. A file that opens but
// holds nothing readable is a success that leaves value as it was. Texts need a width in their
// conversion.
bool read_value(const char *path, const char *conversion, void *value) noexcept;

// Truncates or creates the file and writes one value. False when it cannot be opened; what happens
// to the bytes after that is not examined.
bool write_value(const char *path, const char *format, ...) noexcept
    __attribute__((format(printf, 2, 3)));

#endif
