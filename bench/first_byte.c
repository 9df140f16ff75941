/*
 * first_byte COMMAND [ARGUMENT...]: starts the command, prints the microseconds until its
 * first byte at the local service's port (127.0.0.1:8000), where it listens, and kills it.
 */
#define _GNU_SOURCE
#include <arpa/inet.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

static long microseconds(void) {
    struct timespec time;
    clock_gettime(CLOCK_MONOTONIC, &time);
    return time.tv_sec * 1000000L + time.tv_nsec / 1000;
}

static int listener(void) {
    const int handle = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int on = 1;
    setsockopt(handle, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    struct sockaddr_in place = {0};
    place.sin_family = AF_INET;
    place.sin_port = htons(8000);
    place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (bind(handle, (struct sockaddr *)&place, sizeof place) != 0 || listen(handle, 8) != 0) {
        perror("127.0.0.1:8000");
        exit(1);
    }
    return handle;
}

int main(int argc, char **argv) {
    if (argc < 2) {
        fprintf(stderr, "usage: first_byte COMMAND [ARGUMENT...]\n");
        return 2;
    }
    const int server = listener();
    const long start = microseconds();
    const pid_t child = fork();
    if (child == 0) {
        setpgid(0, 0);
        execvp(argv[1], argv + 1);
        perror(argv[1]);
        _exit(127);
    }
    const int client = accept4(server, NULL, NULL, SOCK_CLOEXEC);
    char byte;
    if (recv(client, &byte, 1, 0) == 1) {
        printf("%ld\n", microseconds() - start);
    }
    kill(-child, SIGKILL);
    waitpid(child, NULL, 0);
    unlink("/tmp/kdump_process_segmentrace");
    return 0;
}
