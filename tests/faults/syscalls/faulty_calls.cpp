#include "tests/faults/syscalls/faulty_calls.h"

#include <sys/syscall.h>

#include <cerrno>

namespace reliability {
namespace {

#define ERROR(name) \
    { #name, name }

const CallError kLess = {"less", 0};

FaultyCall sized(FaultyCall call) {
    call.is_sized = true;
    call.errors.push_back(kLess);
    return call;
}

FaultyCall on_path(int argument, FaultyCall call) {
    call.path_argument = argument;
    return call;
}

std::vector<FaultyCall> all_calls() {
    FaultyCall close = {"close", {SYS_close}, {ERROR(EIO), ERROR(EINTR)}};
    close.is_done = true;
    return {
        on_path(2, {"openat",
                    {SYS_openat},
                    {ERROR(EMFILE), ERROR(ENOSPC), ERROR(EIO), ERROR(ENOMEM), ERROR(EINTR)}}),
        on_path(1, {"open", {SYS_open, SYS_creat}, {ERROR(EMFILE), ERROR(ENOSPC), ERROR(EIO)}}),
        sized({"read", {SYS_read, SYS_pread64}, {ERROR(EIO), ERROR(EINTR), ERROR(EAGAIN)}}),
        sized({"write",
               {SYS_write, SYS_pwrite64},
               {ERROR(ENOSPC), ERROR(EIO), ERROR(EINTR), ERROR(EAGAIN)}}),
        {"writev", {SYS_writev, SYS_readv}, {ERROR(ENOSPC), ERROR(EIO), ERROR(EINTR)}},
        {"copy",
         {SYS_copy_file_range, SYS_sendfile, SYS_ioctl},
         {ERROR(ENOSPC), ERROR(EIO), ERROR(EINTR)}},
        close,
        on_path(1, {"unlink", {SYS_unlink, SYS_rmdir}, {ERROR(EIO), ERROR(EROFS)}}),
        on_path(2, {"unlinkat", {SYS_unlinkat, SYS_mkdirat}, {ERROR(EIO), ERROR(EROFS)}}),
        on_path(1, {"rename",
                    {SYS_rename, SYS_mkdir, SYS_chmod, SYS_link, SYS_symlink, SYS_truncate},
                    {ERROR(ENOSPC), ERROR(EIO)}}),
        on_path(1, {"stat", {SYS_stat, SYS_lstat, SYS_statfs}, {ERROR(EIO), ERROR(ENOMEM)}}),
        on_path(2, {"newfstatat", {SYS_newfstatat, SYS_statx}, {ERROR(EIO), ERROR(ENOMEM)}}),
        {"fstat", {SYS_fstat, SYS_fstatfs}, {ERROR(EIO), ERROR(ENOMEM)}},
        on_path(1, {"access", {SYS_access}, {ERROR(EIO), ERROR(ENOMEM)}}),
        on_path(2, {"faccessat", {SYS_faccessat, SYS_faccessat2}, {ERROR(EIO), ERROR(ENOMEM)}}),
        {"flock", {SYS_flock}, {ERROR(EINTR), ERROR(ENOLCK)}},
        {"ftruncate", {SYS_ftruncate, SYS_fsync}, {ERROR(EIO), ERROR(EINTR)}},
        {"lseek", {SYS_lseek}, {ERROR(EIO)}},
        {"fcntl", {SYS_fcntl}, {ERROR(EMFILE), ERROR(EINTR)}},
        {"dup", {SYS_dup, SYS_dup2, SYS_dup3, SYS_pipe, SYS_pipe2}, {ERROR(EMFILE)}},
        {"fork", {SYS_fork, SYS_vfork, SYS_clone, SYS_clone3}, {ERROR(EAGAIN), ERROR(ENOMEM)}},
        {"execve", {SYS_execve}, {ERROR(ENOMEM), ERROR(EIO), ERROR(ENOENT)}},
        {"wait4", {SYS_wait4, SYS_waitid}, {ERROR(EINTR), ERROR(ECHILD)}},
        {"memory", {SYS_mmap, SYS_mremap}, {ERROR(ENOMEM)}},
        {"socket",
         {SYS_socket, SYS_socketpair},
         {ERROR(EMFILE), ERROR(ENFILE), ERROR(ENOBUFS), ERROR(ENOMEM)}},
        {"socket option",
         {SYS_setsockopt, SYS_getsockopt, SYS_getsockname, SYS_getpeername, SYS_bind},
         {ERROR(ENOBUFS)}},
        {"connect",
         {SYS_connect},
         {ERROR(ECONNREFUSED), ERROR(ETIMEDOUT), ERROR(ENETUNREACH), ERROR(EINTR), ERROR(EAGAIN)}},
        sized({"send",
               {SYS_sendto},
               {ERROR(ECONNRESET), ERROR(EPIPE), ERROR(EAGAIN), ERROR(EINTR), ERROR(ENOBUFS)}}),
        {"sendmsg", {SYS_sendmsg, SYS_sendmmsg}, {ERROR(ECONNRESET), ERROR(EAGAIN)}},
        sized({"recv",
               {SYS_recvfrom},
               {ERROR(ECONNRESET), ERROR(EAGAIN), ERROR(EINTR), ERROR(ENOMEM)}}),
        {"recvmsg", {SYS_recvmsg, SYS_recvmmsg}, {ERROR(ECONNRESET), ERROR(EAGAIN)}},
        {"poll",
         {SYS_poll, SYS_ppoll, SYS_select, SYS_pselect6, SYS_epoll_wait},
         {ERROR(EINTR), ERROR(ENOMEM), ERROR(EAGAIN)}},
        {"getrandom", {SYS_getrandom}, {ERROR(EINTR), ERROR(EAGAIN), ERROR(ENOSYS)}},
    };
}

}  // namespace

const std::vector<FaultyCall> &faulty_calls() {
    static const std::vector<FaultyCall> calls = all_calls();
    return calls;
}

}  // namespace reliability
