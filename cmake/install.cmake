# What `cmake --install` lays out for hosts on Linux, and the .deb cpack makes
# of it:
#   include/pelmdev/      the public headers, and pelm_sim.h
#   lib/                  libpelmdev.so and libpelmdev-sim.so, versioned
#   lib/cmake/pelmdev/    find_package(pelmdev): pelmdev::pelmdev, pelmdev::pelmdev-sim
#   lib/pkgconfig/        pelmdev.pc and pelmdev-sim.pc
#   bin/                  pelmctl and pelmctl-sim
#   the udev rule         see below
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(PELM_INSTALL_HEADER_DIR ${CMAKE_INSTALL_INCLUDEDIR}/pelmdev)
set(PELM_INSTALL_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/pelmdev)

# The headers as hosts see them: side by side in one folder, so each names the
# others by file name alone instead of by their folders in this tree.
set(PELM_PUBLIC_HEADERS core/pelm_dev.h core/pelm_dev_ext.h core/pelm_exports.h core/pelm_records.h
  platform/sim/pelm_sim.h)
foreach(header IN LISTS PELM_PUBLIC_HEADERS)
  file(READ ${PROJECT_SOURCE_DIR}/${header} text)
  string(REGEX REPLACE "#include \"(core|platform/sim)/" "#include \"" text "${text}")
  cmake_path(GET header FILENAME name)
  file(GENERATE OUTPUT ${PROJECT_BINARY_DIR}/include/pelmdev/${name} CONTENT "${text}")
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${header})
  install(FILES ${PROJECT_BINARY_DIR}/include/pelmdev/${name} DESTINATION ${PELM_INSTALL_HEADER_DIR})
endforeach()

foreach(library pelmdev pelmdev-sim)
  target_include_directories(${library} INTERFACE $<INSTALL_INTERFACE:${PELM_INSTALL_HEADER_DIR}>)
endforeach()
install(TARGETS pelmdev pelmdev-sim EXPORT pelmdevTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(EXPORT pelmdevTargets NAMESPACE pelmdev:: DESTINATION ${PELM_INSTALL_CMAKE_DIR})
configure_package_config_file(cmake/pelmdevConfig.cmake.in ${PROJECT_BINARY_DIR}/pelmdevConfig.cmake
  INSTALL_DESTINATION ${PELM_INSTALL_CMAKE_DIR})
# The major version changes when a host built against an older one could break.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/pelmdevConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/pelmdevConfig.cmake ${PROJECT_BINARY_DIR}/pelmdevConfigVersion.cmake
  DESTINATION ${PELM_INSTALL_CMAKE_DIR})

# pkg-config files, written when installing: their prefix is then the one the
# files go to, also when `cmake --install --prefix` names another.
set(PELM_PC_DESCRIPTION_pelmdev "Drives USB HID cockpit panels (hidraw)")
set(PELM_PC_DESCRIPTION_pelmdev-sim "The pelmdev functions over a simulated cockpit, for hosts' tests")
foreach(library pelmdev pelmdev-sim)
  install(CODE "
    set(PELM_PC_PREFIX \"\${CMAKE_INSTALL_PREFIX}\")
    set(PELM_PC_LIBDIR \"${CMAKE_INSTALL_LIBDIR}\")
    set(PELM_PC_INCLUDEDIR \"${CMAKE_INSTALL_INCLUDEDIR}\")
    set(PELM_PC_NAME \"${library}\")
    set(PELM_PC_DESCRIPTION \"${PELM_PC_DESCRIPTION_${library}}\")
    set(PELM_PC_VERSION \"${PROJECT_VERSION}\")
    configure_file(\"${PROJECT_SOURCE_DIR}/cmake/pelmdev.pc.in\" \"${PROJECT_BINARY_DIR}/pkgconfig/${library}.pc\" @ONLY)")
  install(FILES ${PROJECT_BINARY_DIR}/pkgconfig/${library}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()

# udevd reads rules from /usr/lib/udev/rules.d and /etc/udev/rules.d, never
# from below /usr/local: outside a /usr install the rule goes to /etc.
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  set(PELM_UDEV_RULES_DEFAULT "lib/udev/rules.d")
else()
  set(PELM_UDEV_RULES_DEFAULT "/etc/udev/rules.d")
endif()
set(PELM_UDEV_RULES_DIR "${PELM_UDEV_RULES_DEFAULT}" CACHE STRING "Where cmake --install puts the udev rule")
install(FILES ${PROJECT_BINARY_DIR}/70-pelmdev.rules DESTINATION ${PELM_UDEV_RULES_DIR})

# pelmctl finds libpelmdev.so beside it wherever the tree is installed, and
# hands --sim and demo to pelmctl-sim in its own folder.
if(TARGET pelmctl)
  set_target_properties(pelmctl PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
  install(TARGETS pelmctl pelmctl-sim RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()

# `cpack` (in a build folder) makes a .deb of the same layout under /usr.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME pelmdev)
set(CPACK_PACKAGE_VENDOR "PELMDEV")
set(CPACK_PACKAGE_CONTACT "PELMDEV maintainers <pelmdev@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Library and tool that drive USB HID cockpit panels")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
include(CPack)
