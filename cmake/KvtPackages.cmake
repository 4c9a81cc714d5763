# Debian packages, one for each component that is installed; see scripts/package.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME libkvt)
set(CPACK_PACKAGE_VENDOR "the libKVT authors")
set(CPACK_PACKAGE_CONTACT "the libKVT authors <libkvt@localhost>")
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/packages")
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_COMPONENTS_ALL runtime devel)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
if(CMAKE_LIBRARY_ARCHITECTURE STREQUAL "arm-linux-gnueabihf")
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE armhf)
endif()

# CPack 3.25 has no setting for Multi-Arch, so the field rides behind another: the packages of two
# architectures can be installed beside each other.
set(KVT_MULTI_ARCH_SAME "\nMulti-Arch: same")
set(KVT_MULTI_ARCH_FOREIGN "\nMulti-Arch: foreign")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libkvt1)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION "libs${KVT_MULTI_ARCH_SAME}")
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "PLC communication driver - shared library
A driver that an operator panel loads to read and write the values of
programmable controllers on one line. It builds the requests, judges the
replies and keeps the values; the panel owns the line and the timing.

This package contains the library, which hosts load by its name.")
configure_file(cmake/debian/shlibs.in "${KVT_GENERATED}/shlibs" @ONLY)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA
  "${PROJECT_SOURCE_DIR}/cmake/debian/triggers;${PROJECT_SOURCE_DIR}/cmake/debian/symbols;${KVT_GENERATED}/shlibs")
if(CMAKE_CROSSCOMPILING)
  # dpkg-shlibdeps knows the packages of this machine's architecture alone.
  set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS
    "libc6 (>= 2.4), libgcc-s1 (>= 3.5), libqt5core5a (>= 5.15.1), libstdc++6 (>= 11)")
else()
  set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
endif()

set(CPACK_DEBIAN_DEVEL_PACKAGE_NAME libkvt-dev)
set(CPACK_DEBIAN_DEVEL_PACKAGE_SECTION "libdevel${KVT_MULTI_ARCH_SAME}")
set(CPACK_DEBIAN_DEVEL_DESCRIPTION "PLC communication driver - development files
A driver that an operator panel loads to read and write the values of
programmable controllers on one line.

This package contains what a host of the driver is built with: headers, files
for CMake and pkg-config, a manual page for every entry point, the guide for
writers of hosts, the description of the protocol, and two example hosts.")
set(CPACK_DEBIAN_DEVEL_PACKAGE_DEPENDS
  "libkvt1 (= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}), qtbase5-dev")

if(TARGET kvt)
  list(APPEND CPACK_COMPONENTS_ALL tools)
  set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME kvt-tools)
  set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION "utils${KVT_MULTI_ARCH_FOREIGN}")
  set(CPACK_DEBIAN_TOOLS_DESCRIPTION "PLC communication driver - command line
A driver that an operator panel loads to read and write the values of
programmable controllers on one line.

This package contains kvt, which looks for stations, reads, writes and polls
through the driver, explains and replays what went over the line, predicts
scan times, and simulates a controller.")
  set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "libkvt1 (>= ${PROJECT_VERSION})")
  set(CPACK_DEBIAN_TOOLS_PACKAGE_SHLIBDEPS ON)
endif()

# What every Debian package has to say about itself.
string(TIMESTAMP KVT_PACKAGE_DATE "%a, %d %b %Y %H:%M:%S +0000" UTC)
configure_file(cmake/debian/changelog.in "${KVT_GENERATED}/changelog.Debian" @ONLY)
kvt_compress("${KVT_GENERATED}/changelog.Debian" "${KVT_GENERATED}/changelog.Debian.gz")
function(kvt_debian_documents component package)
  install(FILES "${KVT_GENERATED}/changelog.Debian.gz" cmake/debian/copyright
    DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/${package}" COMPONENT ${component})
endfunction()
kvt_debian_documents(runtime libkvt1)
kvt_debian_documents(devel libkvt-dev)
if(TARGET kvt)
  kvt_debian_documents(tools kvt-tools)
endif()

include(CPack)
