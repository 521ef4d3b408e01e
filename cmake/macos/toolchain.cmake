# Builds for macOS on Linux, for the processor in DUNMERE_MACOS_PROCESSOR (arm64 or x86_64). The compiler is fetched when
# it is not there yet.
set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_PROCESSOR ${DUNMERE_MACOS_PROCESSOR})
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES DUNMERE_MACOS_PROCESSOR)

execute_process(COMMAND ${CMAKE_CURRENT_LIST_DIR}/../../scripts/fetch_macos_compiler
  OUTPUT_VARIABLE compiler_folder OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_VARIABLE why RESULT_VARIABLE failed)
if(failed)
  message(FATAL_ERROR "${why}")
endif()
set(CMAKE_CXX_COMPILER ${compiler_folder}/${DUNMERE_MACOS_PROCESSOR}-c++)
set(CMAKE_AR ${compiler_folder}/ar)
set(CMAKE_RANLIB ${compiler_folder}/ranlib)

# There is no SDK. What the compiler does not bring is stood in for by lists of symbols.
set(CMAKE_OSX_SYSROOT "")
set(CMAKE_CXX_FLAGS_INIT "-F${CMAKE_CURRENT_LIST_DIR}/stubs")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-L${CMAKE_CURRENT_LIST_DIR}/stubs")
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY NEVER)
set(CMAKE_SKIP_RPATH ON)
