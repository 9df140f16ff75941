/* A call that does nothing, in a shared library of its own: what calling cloud_log costs at least.
 */
#ifndef CLOUDAGENT_BENCH_EMPTY_CALL_H
#define CLOUDAGENT_BENCH_EMPTY_CALL_H

#ifdef __cplusplus
extern "C"
#endif
    void
    empty_log(const char *format, ...);

#endif
