/*
 * Preloaded into programs that run in a private world: sleep() appends its seconds to a record and
 * returns at once. A number in the limit file ends the program with SIGTERM at that call, which
 * stops a run that would retry without end.
 */
#include "testing/sleep_stand_in.h"

#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

static const char record_path[] = "/run/world/sleeps";
static const char limit_path[] = "/run/world/sleep_limit";

static long read_limit(void) {
    char text[16] = "";
    const int file = open(limit_path, O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return 0;
    if (read(file, text, sizeof text - 1) < 0)
        text[0] = '\0';
    close(file);
    return atol(text);
}

int is_last_sleep(unsigned seconds) {
    static long calls;
    char line[16];
    const int length = snprintf(line, sizeof line, "%u\n", seconds);
    const int file = open(record_path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);

    if (file >= 0) {
        if (write(file, line, (size_t)length) < 0)
            perror(record_path);
        close(file);
    }
    return ++calls == read_limit();
}

unsigned sleep(unsigned seconds) {
    if (is_last_sleep(seconds))
        raise(SIGTERM);
    return 0;
}
