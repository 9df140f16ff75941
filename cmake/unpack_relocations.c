/*
 * A start file's first step, for C libraries whose own does not know packed relocations (musl before
 * 1.2.4): applies them, marks them as done, and goes on to the C library's start file. Nothing is
 * relocated and no C library is there yet.
 */
#include <elf.h>
#include <link.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __x86_64__
__asm__(
    ".globl start_packed\n"
    "start_packed:\n"
    "    mov %rsp, %rbx\n"
    "    and $-16, %rsp\n"
    "    call unpack_relocations\n"
    "    mov %rbx, %rsp\n"
    "    xor %edx, %edx\n" /* no function for atexit() */
    "    jmp _start\n");
#elif defined __aarch64__
__asm__(
    ".globl start_packed\n"
    "start_packed:\n"
    "    bl unpack_relocations\n"
    "    mov x0, xzr\n" /* no function for atexit() */
    "    b _start\n");
#endif

#define HIDDEN __attribute__((visibility("hidden")))
enum {
    kPackedRelocations = 36,
    kTheirSize = 35
}; /* DT_RELR and DT_RELRSZ, newer than some elf.h */

extern HIDDEN const char __ehdr_start[]; /* where the program was loaded */
extern HIDDEN ElfW(Dyn) _DYNAMIC[];

/* A word with bit 0 clear is the place of an address; with bit 0 set, its other bits tell which of the
 * next 63 (31) words are addresses. */
HIDDEN void unpack_relocations(void) {
    const uintptr_t base = (uintptr_t)__ehdr_start;
    const uintptr_t *packed = NULL;
    uintptr_t *place = NULL;
    size_t count = 0;

    for (ElfW(Dyn) *entry = _DYNAMIC; entry->d_tag != DT_NULL; ++entry) {
        if (entry->d_tag == kPackedRelocations) {
            packed = (const uintptr_t *)(base + entry->d_un.d_ptr);
        } else if (entry->d_tag == kTheirSize) {
            count = entry->d_un.d_val / sizeof *packed;
            entry->d_un.d_val = 0;
        }
    }
    for (; count > 0; --count, ++packed) {
        if ((*packed & 1) == 0) {
            place = (uintptr_t *)(base + *packed);
            *place++ += base;
            continue;
        }
        uintptr_t *next = place;
        for (uintptr_t bits = *packed >> 1; bits != 0; bits >>= 1, ++next) {
            if ((bits & 1) != 0) {
                *next += base;
            }
        }
        place += 8 * sizeof *place - 1;
    }
}
