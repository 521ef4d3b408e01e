# Makes an executable the application that macOS shows in its folders: Dunmere.app with its icon and description.
#
# It says that it runs on no system older than this one. Homebrew's libraries, and so what is made with them, run on none
# older than the one that they were installed on; a cross build has its own target.
set(DUNMERE_OLDEST_MACOS 13.0)
if(CMAKE_HOST_APPLE)
  execute_process(COMMAND sw_vers -productVersion OUTPUT_VARIABLE version COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX REPLACE "[.].*" ".0" DUNMERE_OLDEST_MACOS "${version}")
endif()

function(dunmere_make_bundle target)
  set(folder ${PROJECT_SOURCE_DIR}/packaging/macos)
  target_sources(${target} PRIVATE ${folder}/Dunmere.icns)
  set_source_files_properties(${folder}/Dunmere.icns TARGET_DIRECTORY ${target}
    PROPERTIES MACOSX_PACKAGE_LOCATION Resources)
  set_target_properties(${target} PROPERTIES
    OUTPUT_NAME Dunmere
    MACOSX_BUNDLE ON
    MACOSX_BUNDLE_INFO_PLIST ${folder}/Info.plist.in
    MACOSX_BUNDLE_GUI_IDENTIFIER org.example.dunmere  # the project has no home on the web yet
    MACOSX_BUNDLE_SHORT_VERSION_STRING ${PROJECT_VERSION}
    MACOSX_BUNDLE_BUNDLE_VERSION ${PROJECT_VERSION})
endfunction()
