# CPack's settings for the Debian package. Included by CMakeLists.txt.

file(WRITE ${made}/conffiles "${CMAKE_INSTALL_FULL_SYSCONFDIR}/xdg/autostart/${application}.desktop\n")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME rotika)
set(CPACK_PACKAGE_VENDOR Rotika)
set(CPACK_PACKAGE_CONTACT ${ROTIKA_CONTACT})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "radial function wheel for mouse, voice and gaze")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
    "Rotika shows a wheel of up to 24 functions over the program in front, games
included. A chosen field presses keys and mouse buttons or opens a program or
a web page, while the program underneath keeps the keyboard.

It is made for people who cannot use mouse and keyboard as others do: an eye
tracker can move the wheel's cursor, and spoken words, recognised on the
computer itself, run functions and click anywhere on the screen. Its user
interface is in Polish. It needs an X11 session.")
set(CPACK_STRIP_FILES ON)
set(CPACK_THREADS 1) # xz gives other bytes for other numbers of threads
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${made}/conffiles)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Looked for at run time; without each the program starts, and one of its features is missing: labels on elements and
# screen readers; notices of a locked screen; sound.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS
    "at-spi2-core, default-dbus-session-bus | dbus-session-bus, pulseaudio | pipewire-pulse, hicolor-icon-theme")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "picom | xcompmgr, xdg-utils")
include(CPack)
