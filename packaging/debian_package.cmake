# The Debian package: `cpack` in the build folder makes it.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME dunmere)
set(CPACK_PACKAGE_CONTACT "The Dunmere maintainers <maintainers@${DUNMERE_HOME}>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "find what fills a disk and move it to the Trash")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/readable_directories.cmake)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE https://${DUNMERE_HOME}/)
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"Dunmere adds up what every folder of a drive takes and shows it while it
still counts: side by side, one column for each open folder, the largest
entries first. What is not needed any more goes to the Trash, after asking.
.
It runs with its user's own permissions, keeps no settings and contacts no
server.")

# The libraries that the program is linked to are found by dpkg-shlibdeps. What it loads besides does not show there:
# Qt looks for the QML modules at run time, and Debian's packages of them do not depend on each other.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS
    "qml6-module-qtqml, qml6-module-qtqml-models, qml6-module-qtqml-workerscript, qml6-module-qtquick, qml6-module-qtquick-templates")
# Debian 13 has the language's own types in a package of their own.
if(EXISTS ${QT6_INSTALL_PREFIX}/${QT6_INSTALL_QML}/QML)
  string(PREPEND CPACK_DEBIAN_PACKAGE_DEPENDS "qml6-module-qml, ")
endif()
# Wayland desktops, and the desktop's theme of scalable icons.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "libqt6svg6, qt6-wayland")
# The desktop's own folder chooser instead of Qt's.
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "qt6-gtk-platformtheme")

include(CPack)
