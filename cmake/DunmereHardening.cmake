# Hardening: a memory error ends the program instead of being exploitable. For all code built here, that which Qt
# generates included, in optimized builds for Linux. A test checks the finished program.
if(NOT CMAKE_SYSTEM_NAME STREQUAL "Linux" OR DUNMERE_SANITIZE)
  return()  # Apple's tools have their own ways; sanitizers find more, and replace what the first of these would call
endif()

include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)  # with CMAKE_POSITION_INDEPENDENT_CODE: executables are position-independent (ASLR)

set(optimized $<CONFIG:Release,RelWithDebInfo,MinSizeRel>)
add_compile_definitions(
  _GLIBCXX_ASSERTIONS                # an index beyond a vector's or a view's end, an empty optional, a null pointer
  $<${optimized}:_FORTIFY_SOURCE=3>)  # calls of the C library that would write beyond a buffer of known size
add_compile_options(
  -fstack-protector-strong  # a local array that was overrun is noticed before the function returns
  -fstack-clash-protection  # a large frame cannot step over the guard page below the stack
  $<$<STREQUAL:${CMAKE_SYSTEM_PROCESSOR},x86_64>:-fcf-protection>  # jumps land only where a jump may
  $<$<STREQUAL:${CMAKE_SYSTEM_PROCESSOR},aarch64>:-mbranch-protection=standard>)
# The global offset table is filled at the start and then read-only.
add_link_options(LINKER:-z,relro,-z,now)
