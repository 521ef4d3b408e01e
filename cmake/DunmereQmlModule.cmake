# Adds a QML module as a static library with a plugin: qt_add_qml_module with what all of ours have in common.
function(dunmere_add_qml_module target)
  qt_add_library(${target} STATIC)
  set_target_properties(${target} PROPERTIES AUTOMOC ON)
  qt_add_qml_module(${target} VERSION 1.0 RESOURCE_PREFIX /qt/qml ${ARGN})
  target_link_libraries(${target} PRIVATE dunmere_options)
  # The generated type registration includes the headers by their bare names.
  target_include_directories(${target} PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})

  # What Qt generates from QML files is compiled as one file; it is not ours to keep free of shadowing.
  get_target_property(sources ${target} SOURCES)
  list(FILTER sources INCLUDE REGEX "/qmlcache/|_qmltyperegistrations")
  set_source_files_properties(${sources} PROPERTIES UNITY_GROUP qml)
  set_target_properties(${target} PROPERTIES
    UNITY_BUILD ON UNITY_BUILD_MODE GROUP
    UNITY_BUILD_CODE_BEFORE_INCLUDE "#pragma GCC diagnostic ignored \"-Wshadow\"")

  # Qt makes further targets of a module; which ones depends on its version.
  foreach(part ${target} ${target}_qmlcache ${target}plugin ${target}plugin_init)
    if(TARGET ${part} AND NOT part STREQUAL dunmere_theme)
      target_precompile_headers(${part} REUSE_FROM dunmere_theme)
    endif()
  endforeach()
endfunction()
