# Installation and the Debian package.
#
# Layout under the prefix:
#   LIBDIR/libvsm.so.16.2.6 (SONAME libvsm.so.16) and its links, INCLUDEDIR/vsm.h,
#   LIBDIR/pkgconfig/vsm.pc, LIBDIR/cmake/vsm/ (find_package(vsm) gives vsm::vsm),
#   BINDIR/vsmkit, and the service folder LIBDIR/vsm/ with vsmhost, vsmctl, the page and a
#   libvsm.so link. A module keeps its configuration and log beside the program that loads it,
#   so the hosts live in a folder of their own; BINDIR/vsmhost and BINDIR/vsmctl link there.
include(GNUInstallDirs)

set(VSM_PACKAGE_VERSION 16.2.6)
set(VSM_SOVERSION 16)
set_target_properties(vsm PROPERTIES VERSION ${VSM_PACKAGE_VERSION} SOVERSION ${VSM_SOVERSION})
target_include_directories(vsm INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)

set(vsm_service_dir ${CMAKE_INSTALL_LIBDIR}/vsm)
install(TARGETS vsm EXPORT vsmTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} NAMELINK_COMPONENT Unspecified)
install(FILES ${CMAKE_SOURCE_DIR}/include/vsm.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(TARGETS vsmkit RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(TARGETS vsmhost vsmctl RUNTIME DESTINATION ${vsm_service_dir})
install(DIRECTORY ${CMAKE_SOURCE_DIR}/tools/vsmhost/page DESTINATION ${vsm_service_dir})

# Relative links, made in the build tree and installed as links.
set(vsm_links ${CMAKE_BINARY_DIR}/install-links)
file(MAKE_DIRECTORY ${vsm_links}/bin)
file(CREATE_LINK ../libvsm.so.${VSM_SOVERSION} ${vsm_links}/libvsm.so SYMBOLIC)
file(RELATIVE_PATH vsm_bin_to_service /${CMAKE_INSTALL_BINDIR} /${vsm_service_dir})
foreach(program vsmhost vsmctl)
  file(CREATE_LINK ${vsm_bin_to_service}/${program} ${vsm_links}/bin/${program} SYMBOLIC)
  install(FILES ${vsm_links}/bin/${program} DESTINATION ${CMAKE_INSTALL_BINDIR})
endforeach()
install(FILES ${vsm_links}/libvsm.so DESTINATION ${vsm_service_dir})

# pkg-config: the prefix is found from the file's own place, so a staged tree works as well.
file(RELATIVE_PATH vsm_pc_to_prefix /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" vsm_pc_to_prefix "${vsm_pc_to_prefix}")
configure_file(${CMAKE_CURRENT_LIST_DIR}/vsm.pc.in ${CMAKE_BINARY_DIR}/vsm.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/vsm.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

set(vsm_cmake_dir ${CMAKE_INSTALL_LIBDIR}/cmake/vsm)
install(EXPORT vsmTargets NAMESPACE vsm:: DESTINATION ${vsm_cmake_dir})
include(CMakePackageConfigHelpers)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/vsmConfigVersion.cmake
  VERSION ${VSM_PACKAGE_VERSION} COMPATIBILITY SameMajorVersion)
file(WRITE ${CMAKE_BINARY_DIR}/vsmConfig.cmake
  "# vsm::vsm: the module library (a host loads it with dlopen; the target gives its header\n"
  "# and, through $<TARGET_FILE:vsm::vsm>, its path).\n"
  "include(\"\${CMAKE_CURRENT_LIST_DIR}/vsmTargets.cmake\")\n")
install(FILES ${CMAKE_BINARY_DIR}/vsmConfig.cmake ${CMAKE_BINARY_DIR}/vsmConfigVersion.cmake
  DESTINATION ${vsm_cmake_dir})

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vsm)
set(CPACK_PACKAGE_VERSION ${VSM_PACKAGE_VERSION})
set(CPACK_PACKAGE_VENDOR "vsm")
set(CPACK_PACKAGE_CONTACT "vsm maintainers <root@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY
  "manager module of the local device-access service, with its reference host")
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
# The dependencies are those dpkg-shlibdeps (dpkg-dev) reads from the installed binaries; the
# programs the module runs through the shell are recommended.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "net-tools, libnss3-tools")
include(CPack)
