# Lets a cross build for macOS compile and link against ICU, for which the host's stands in: its headers are the same on
# every system, and its symbols too. The linker gets them as lists.
find_path(host_icu_headers unicode/ucol.h PATHS /usr/include NO_DEFAULT_PATH REQUIRED)
find_program(host_nm nm REQUIRED)
set(icu_folder ${PROJECT_BINARY_DIR}/icu)
file(MAKE_DIRECTORY ${icu_folder}/include)
file(CREATE_LINK ${host_icu_headers}/unicode ${icu_folder}/include/unicode SYMBOLIC)
file(STRINGS ${host_icu_headers}/unicode/uvernum.h icu_version REGEX "^#define U_ICU_VERSION_MAJOR_NUM [0-9]+")
string(REGEX REPLACE ".* " "" icu_version "${icu_version}")

foreach(library uc i18n)
  find_library(host_icu_${library} icu${library} PATHS /usr/lib PATH_SUFFIXES ${CMAKE_HOST_SYSTEM_PROCESSOR}-linux-gnu
    NO_DEFAULT_PATH REQUIRED)
  execute_process(COMMAND ${host_nm} --dynamic --defined-only --format=posix ${host_icu_${library}}
    OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX MATCHALL "(^|\n)[a-z][A-Za-z0-9_]*_${icu_version}" symbols "${symbols}")  # the C functions
  list(TRANSFORM symbols STRIP)
  list(TRANSFORM symbols PREPEND "_")
  list(JOIN symbols ", " symbols)
  file(WRITE ${icu_folder}/libicu${library}.tbd "--- !tapi-tbd\ntbd-version: 4\n"
    "targets: [ x86_64-macos, arm64-macos ]\ninstall-name: '@rpath/libicu${library}.${icu_version}.dylib'\n"
    "exports:\n  - targets: [ x86_64-macos, arm64-macos ]\n    symbols: [ ${symbols} ]\n...\n")
endforeach()
set(ICU_INCLUDE_DIR ${icu_folder}/include)
set(ICU_UC_LIBRARY_RELEASE ${icu_folder}/libicuuc.tbd)
set(ICU_I18N_LIBRARY_RELEASE ${icu_folder}/libicui18n.tbd)
