# Makes an executable the application that macOS shows in its folders: Dunmere.app with its icon and description.
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
