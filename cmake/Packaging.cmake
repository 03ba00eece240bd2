# The Debian package: `cpack` in a release build's folder makes quillo-agent_VERSION_ARCHITECTURE.deb.
# Everything is installed below the prefix but for the autostart entry: of /usr it goes to /etc, where desktops look.
include(GNUInstallDirs)

install(FILES resources/com.quilloapp.quillo-agent.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)

# Compressed as packages want it, without a date, so that the same source gives the same package.
find_program(GZIP gzip REQUIRED)
# quillo_install_compressed(FILE NAME DIRECTORY): FILE as DIRECTORY/NAME.gz.
function(quillo_install_compressed file name directory)
  set(compressed ${CMAKE_BINARY_DIR}/packaging/${name}.gz)
  add_custom_command(OUTPUT ${compressed}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_BINARY_DIR}/packaging
    COMMAND ${GZIP} -9nc ${CMAKE_SOURCE_DIR}/${file} > ${compressed}
    DEPENDS ${CMAKE_SOURCE_DIR}/${file} VERBATIM)
  set_property(GLOBAL APPEND PROPERTY QUILLO_COMPRESSED ${compressed})
  install(FILES ${compressed} DESTINATION ${directory})
endfunction()
quillo_install_compressed(docs/man/quillo.1 quillo.1 ${CMAKE_INSTALL_MANDIR}/man1)
quillo_install_compressed(docs/man/quillo-agent.1 quillo-agent.1 ${CMAKE_INSTALL_MANDIR}/man1)
quillo_install_compressed(docs/man/quilloctl.1 quilloctl.1 ${CMAKE_INSTALL_MANDIR}/man1)
quillo_install_compressed(docs/changelog changelog share/doc/quillo-agent)
get_property(compressed GLOBAL PROPERTY QUILLO_COMPRESSED)
add_custom_target(compressed_documents ALL DEPENDS ${compressed})
install(FILES docs/copyright resources/LegalAcknowledgements.txt DESTINATION share/doc/quillo-agent)

# Where each shell looks for what it does not know yet.
install(FILES quilloctl/completion/quilloctl.bash DESTINATION share/bash-completion/completions RENAME quilloctl)
install(FILES quilloctl/completion/_quilloctl DESTINATION share/zsh/vendor-completions)
install(FILES quilloctl/completion/quilloctl.fish DESTINATION share/fish/vendor_completions.d)

# Switched off: whoever wants the agent at login says `quilloctl agent enable`, which writes an entry of the user's own.
install(CODE "
  set(sysconf \"\${CMAKE_INSTALL_PREFIX}/etc\")
  if(CMAKE_INSTALL_PREFIX STREQUAL \"/usr\")
    set(sysconf /etc)
  endif()
  file(INSTALL DESTINATION \"\${sysconf}/xdg/autostart\" TYPE FILE
    FILES ${CMAKE_SOURCE_DIR}/resources/autostart/com.quilloapp.quillo-agent.desktop)")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME quillo-agent)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR "Tallowmere, LLC")
set(CPACK_PACKAGE_CONTACT "Tallowmere LLC <packages@tallowmere.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "journal in the system tray, with reminders")
set(CPACK_PACKAGE_DESCRIPTION "Puts a quill in the tray: a click opens a compact window, and what you write is
saved straight into your journal, a folder of plain files. Reminds you of
writing by a window, a notification or a sound, on a recurrence of your choice.
.
With it comes quilloctl, which reads and changes settings, journal and entries
from a terminal.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
# The entry in /etc is no relative path.
set(CPACK_SET_DESTDIR ON)
set(CPACK_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
# Directories get the permissions of the packager's umask otherwise.
file(WRITE ${CMAKE_BINARY_DIR}/packaging/open-directories.cmake
  "execute_process(COMMAND find \"\${CPACK_TEMPORARY_DIRECTORY}\" -type d -exec chmod 755 {} +)\n")
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_BINARY_DIR}/packaging/open-directories.cmake)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "https://quilloapp.example/")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# What no library names: the platform plug-in of windows, the database of the journal's index, the time zones.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libqt6sql6-sqlite, qt6-qpa-plugins, tzdata")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "dbus-user-session | dbus-x11, fonts-inter, hunspell-en-us, notification-daemon")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "pulseaudio | pipewire-pulse, x-terminal-emulator")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
file(WRITE ${CMAKE_BINARY_DIR}/packaging/conffiles "/etc/xdg/autostart/com.quilloapp.quillo-agent.desktop\n")
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${CMAKE_BINARY_DIR}/packaging/conffiles)
include(CPack)
