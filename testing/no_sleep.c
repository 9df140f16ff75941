/*
 * no_sleep PROGRAM [ARGUMENT...] runs a program in place of itself. Its calls of sleep(), and those of
 * all it starts, return at once: a process beside it records them as sleep_stand_in.c does. For
 * static programs and for emulators, whose sleep() nothing can replace. Without LD_PRELOAD, which says that
 * sleeps are to be recorded, it only runs the program.
 */
#define _GNU_SOURCE 1
#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <poll.h>
#include <sched.h>
#include <signal.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <time.h>
#include <unistd.h>

#include "testing/sleep_stand_in.h"

static int filter_sleeps(void) {
    struct sock_filter code[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(struct seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_nanosleep, 1, 0),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_clock_nanosleep, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_USER_NOTIF),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const struct sock_fprog program = {sizeof code / sizeof *code, code};

    prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    return (int)syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, SECCOMP_FILTER_FLAG_NEW_LISTENER,
                        &program);
}

static void answer(int listener, const struct seccomp_notif *call) {
    const int requested = call->data.nr == SYS_nanosleep ? 0 : 2; /* its argument */
    struct seccomp_notif_resp response = {.id = call->id};
    struct timespec time = {0, 0};
    struct iovec here = {&time, sizeof time};
    struct iovec there = {(void *)(uintptr_t)call->data.args[requested], sizeof time};

    if (process_vm_readv((pid_t)call->pid, &here, 1, &there, 1, 0) < 0)
        perror("no_sleep: process_vm_readv");
    if (time.tv_sec == 0 || time.tv_nsec != 0) /* no sleep(), but an emulator's own wait */
        response.flags = SECCOMP_USER_NOTIF_FLAG_CONTINUE;
    else if (is_last_sleep((unsigned)time.tv_sec))
        kill((pid_t)call->pid, SIGTERM);
    ioctl(listener, SECCOMP_IOCTL_NOTIF_SEND, &response);
}

/* Until no process is left that the filter applies to. */
static void supervise(int from_program) {
    struct pollfd calls = {.events = POLLIN};

    if (read(from_program, &calls.fd, sizeof calls.fd) != sizeof calls.fd)
        exit(EXIT_FAILURE);
    while (poll(&calls, 1, -1) > 0 && (calls.revents & POLLIN) != 0) {
        struct seccomp_notif call = {0};

        if (ioctl(calls.fd, SECCOMP_IOCTL_NOTIF_RECV, &call) == 0)
            answer(calls.fd, &call);
    }
    exit(EXIT_SUCCESS);
}

int main(int argc, char **argv) {
    int to_supervisor[2], listener;

    if (argc > 1 && getenv("LD_PRELOAD") == NULL) {
        execvp(argv[1], argv + 1);
        return 127;
    }
    if (argc < 2 || pipe2(to_supervisor, O_CLOEXEC) != 0)
        return EXIT_FAILURE;
    /* A fork() that shares the table of descriptors, up to the exec. */
    if (syscall(SYS_clone, CLONE_FILES | SIGCHLD, 0, 0, 0, 0) == 0)
        supervise(to_supervisor[0]);
    listener = filter_sleeps();
    if (listener >= 0 && write(to_supervisor[1], &listener, sizeof listener) > 0)
        execvp(argv[1], argv + 1);
    perror(argv[1]);
    return 127;
}
