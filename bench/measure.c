/*
 * measure FILE COMMAND [ARGUMENT...]: runs the command and appends one JSON line to FILE: its wall,
 * user and system time in seconds, its peak resident memory in KiB. Exits with its status.
 *
 * Small and in C, because a process inherits its parent's peak memory.
 */
#include <stdio.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

static double seconds(struct timeval time) {
    return (double)time.tv_sec + (double)time.tv_usec / 1e6;
}

static double now(void) {
    struct timespec time;
    clock_gettime(CLOCK_MONOTONIC, &time);
    return (double)time.tv_sec + (double)time.tv_nsec / 1e9;
}

int main(int argc, char **argv) {
    if (argc < 3) {
        fprintf(stderr, "usage: measure FILE COMMAND [ARGUMENT...]\n");
        return 2;
    }
    const double start = now();
    const pid_t child = fork();
    if (child == 0) {
        execvp(argv[2], argv + 2);
        perror(argv[2]);
        _exit(127);
    }
    int status = 0;
    struct rusage usage;
    if (child < 0 || wait4(child, &status, 0, &usage) != child) {
        perror("measure");
        return 1;
    }
    const double wall = now() - start;
    FILE *const out = fopen(argv[1], "a");
    if (out == NULL ||
        fprintf(out, "{\"wall\": %.6f, \"user\": %.6f, \"system\": %.6f, \"peak_kb\": %ld}\n", wall,
                seconds(usage.ru_utime), seconds(usage.ru_stime), usage.ru_maxrss) < 0 ||
        fclose(out) != 0) {
        perror(argv[1]);
        return 1;
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}
