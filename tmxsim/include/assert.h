/* The phone's <assert.h> also declares its C library's assertion entry,
   which the standard macro calls; code that names the source and line of its
   own failures calls it directly. No include guard: <assert.h> is read anew
   each time, for NDEBUG. The pragma lets #include_next pass the pedantic
   warnings, as the platform's own headers do. */
#pragma GCC system_header
#include_next <assert.h>

#ifndef TMXSIM_ASSERT_RTN_DECLARED
#define TMXSIM_ASSERT_RTN_DECLARED
#ifdef __cplusplus
extern "C" {
#endif
void __assert_rtn(const char *function, const char *file, int line,
                  const char *expression) __attribute__((__noreturn__));
#ifdef __cplusplus
}
#endif
#endif
