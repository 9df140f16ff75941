/* Environment variables of faulty_memory.c, and its system call. */
#pragma once

#define FAULTY_MEMORY_AT "FAULTY_MEMORY_AT"
#define FAULTY_MEMORY_ONWARD "FAULTY_MEMORY_ONWARD"
#define FAULTY_MEMORY_PLACES "FAULTY_MEMORY_PLACES"
#define FAULTY_MEMORY_STEADY "FAULTY_MEMORY_STEADY" /* the clock is left as it is */
#define FAULTY_MEMORY_RECORD "FAULTY_MEMORY_RECORD"

/* A system call that the kernel does not know. */
#define FAULTY_MEMORY_MAIN_BEGINS 0x6d61
