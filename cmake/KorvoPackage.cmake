# The Debian package: scripts/package, which is cpack -G DEB in the build folder of the preset "package".
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME korvo)
set(CPACK_PACKAGE_VENDOR "Korvo")
set(CPACK_PACKAGE_CONTACT "The Korvo developers <hello@korvo.app>")
set(CPACK_PACKAGE_HOMEPAGE_URL "https://korvo.app")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "time tracker in the tray for tasks kept in Notion")
set(CPACK_PACKAGE_DESCRIPTION
    "Korvo shows the timer that runs in a Notion workspace as a ring and a clock in
the tray, starts and stops timers from today's tasks, and makes a task with one
shortcut. It has no database of its own.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
# The libraries, with the versions whose symbols are used. Beside them: the authorities that HTTPS trusts.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS ca-certificates)
# A bus for the tray, a browser for links, and the theme in which desktops look for the icon.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "default-dbus-session-bus | dbus-session-bus, hicolor-icon-theme, xdg-utils")
# For a session of Wayland without X11, which the user asks for by QT_QPA_PLATFORM.
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "qt6-wayland")
include(CPack)
