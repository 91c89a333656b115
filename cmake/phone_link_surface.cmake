# The C entries the tool's own code links against must all exist on the
# phone: the platform's (whatever the simulated platform defines), the C++
# runtime's, and the few C library functions below. A glibc-only entry, such
# as its assertion handler, fails here instead of in the link for the phone.
#
#   cmake -DNM=nm -DPLATFORM=libtmxsim.a -DTOOL="liba.a;libb.a;main.o" -P ...
cmake_minimum_required(VERSION 3.25)

# The C library functions the tool calls; the phone's C library has each.
set(phone_c_library
  exit getopt_long isdigit isxdigit localtime_r memchr memcmp memcpy memmove memset printf
  puts snprintf strftime strlen strtol tzset
  # What compilers call of their own accord: stack protection, bcmp for a
  # memcmp compared with zero (clang), and 128-bit division, from the
  # compiler's own runtime on every target.
  __stack_chk_fail __stack_chk_guard bcmp __udivti3 __umodti3 __udivmodti4
  # errno, as the C++ library's inline string-to-number conversion reaches
  # it; the phone's C++ library reaches its own.
  __errno_location)

function(global_symbols out flags)
  execute_process(COMMAND ${NM} ${flags} ${ARGN}
    OUTPUT_VARIABLE listing RESULT_VARIABLE status)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "${NM} ${flags} failed on ${ARGN}")
  endif()
  string(REGEX MATCHALL "[A-Za-z] [A-Za-z_][A-Za-z0-9_.@]*\n" lines "${listing}")
  set(names "")
  foreach(line IN LISTS lines)
    string(REGEX REPLACE "^[A-Za-z] ([^\n]*)\n$" "\\1" name "${line}")
    list(APPEND names ${name})
  endforeach()
  list(REMOVE_DUPLICATES names)
  set(${out} "${names}" PARENT_SCOPE)
endfunction()

global_symbols(platform "--defined-only;--extern-only" ${PLATFORM})
global_symbols(needed "--undefined-only" ${TOOL})

set(foreign "")
foreach(name IN LISTS needed)
  # The C++ ABI and runtime (mangled names, exceptions, unwinding, statics)
  # and the sanitizers' runtime of a checking build.
  if(name MATCHES "^(_Z|__cxa_|__gxx_personality|_Unwind_|_GLOBAL_OFFSET_TABLE_$|__dso_handle$|__asan_|__ubsan_|__sanitizer_|__lsan_)")
    continue()
  endif()
  if(name IN_LIST platform OR name IN_LIST phone_c_library)
    continue()
  endif()
  list(APPEND foreign ${name})
endforeach()

if(foreign)
  list(JOIN foreign " " foreign)
  message(FATAL_ERROR "the tool calls entries the phone does not have: ${foreign}")
endif()
list(LENGTH needed count)
message(STATUS "all ${count} entries the tool links against exist on the phone")
