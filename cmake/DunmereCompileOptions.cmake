# Warnings and sanitizers for every target of the project.
add_library(dunmere_options INTERFACE)
target_compile_options(dunmere_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor
                       $<$<CXX_COMPILER_ID:Clang,AppleClang>:-Wthread-safety> $<$<BOOL:${DUNMERE_WERROR}>:-Werror>)
if(DUNMERE_SANITIZE)
  # Without vptr: that check makes system calls of its own, which tests that count or fail system calls would see.
  target_compile_options(dunmere_options INTERFACE -fsanitize=${DUNMERE_SANITIZE} -fno-sanitize=vptr
                         -fno-omit-frame-pointer)
  target_link_options(dunmere_options INTERFACE -fsanitize=${DUNMERE_SANITIZE})
endif()
target_include_directories(dunmere_options INTERFACE ${PROJECT_SOURCE_DIR})
