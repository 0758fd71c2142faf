# What `cmake --install` lays out, and the Debian package CPack makes of it.
include(GNUInstallDirs)

install(TARGETS vxcfg vxrack-sim RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES ${CMAKE_CURRENT_LIST_DIR}/vxcfg.desktop
        DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${CMAKE_CURRENT_LIST_DIR}/vxcfg.svg
        DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
install(FILES ${CMAKE_CURRENT_LIST_DIR}/vxcfg.png
        DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/256x256/apps)
install(FILES ${CMAKE_SOURCE_DIR}/README.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES ${CMAKE_SOURCE_DIR}/sim/README.md
        DESTINATION ${CMAKE_INSTALL_DOCDIR} RENAME README.sim.md)
install(DIRECTORY ${CMAKE_SOURCE_DIR}/sim/racks/
        DESTINATION ${CMAKE_INSTALL_DATADIR}/vxcfg/racks FILES_MATCHING PATTERN "*.rack")

set(CPACK_GENERATOR "DEB")
set(CPACK_PACKAGE_NAME "vxcfg")
set(CPACK_PACKAGE_VENDOR "VXCFG")
set(CPACK_PACKAGE_CONTACT "VXCFG maintainers <vxcfg@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Configurator of the VX remote-I/O rack, with a simulated rack")
string(CONCAT CPACK_PACKAGE_DESCRIPTION
       "VXCFG joins a computer to a VX remote-I/O rack over a serial line: it scans the rack, "
       "reads and changes the parameters of each card, watches live values and keeps the "
       "settings in project files. vxrack-sim serves a simulated rack on a pseudo-terminal.")
set(CPACK_PACKAGING_INSTALL_PREFIX "/usr")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION "electronics")
set(CPACK_DEBIAN_PACKAGE_PRIORITY "optional")
# The Qt libraries and the C++ runtime come from what the programs link (dpkg-shlibdeps).
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_STRIP_FILES ON)
include(CPack)
