# What is installed and where. Components: runtime (the library), devel (what a host is built
# with), tools (programs and sample tag lists).
#
# The public headers keep their folder below include/kvt, so that a source file of a host includes
# them by the same names here and there.
include(CMakePackageConfigHelpers)

# Compresses a file without a time stamp or a name in it.
function(kvt_compress from to)
  find_program(KVT_GZIP gzip REQUIRED)
  execute_process(COMMAND "${KVT_GZIP}" -9nc "${from}" OUTPUT_FILE "${to}"
    COMMAND_ERROR_IS_FATAL ANY)
endfunction()

set(KVT_PUBLIC_HEADERS
  driver/com_info.h driver/records.h driver/entry_points.h driver/version.h driver/version_note.h
  driver/loaded_version.h)
set(KVT_CMAKE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/KVT")
set(KVT_GENERATED "${PROJECT_BINARY_DIR}/install")

install(TARGETS KVT kvt_headers EXPORT KVTTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT runtime NAMELINK_COMPONENT devel)
install(FILES ${KVT_PUBLIC_HEADERS}
  DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/kvt/driver" COMPONENT devel)

configure_package_config_file(cmake/KVTConfig.cmake.in "${KVT_GENERATED}/KVTConfig.cmake"
  INSTALL_DESTINATION "${KVT_CMAKE_DIR}")
write_basic_package_version_file("${KVT_GENERATED}/KVTConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES "${KVT_GENERATED}/KVTConfig.cmake" "${KVT_GENERATED}/KVTConfigVersion.cmake"
  DESTINATION "${KVT_CMAKE_DIR}" COMPONENT devel)
install(EXPORT KVTTargets NAMESPACE KVT:: DESTINATION "${KVT_CMAKE_DIR}" COMPONENT devel)

# The pkg-config file finds the prefix from its own place, so that the tree may be moved; a
# directory that was given as an absolute one stays where it is.
set(KVT_PC_PREFIX "${CMAKE_INSTALL_PREFIX}")
if(NOT IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
  file(RELATIVE_PATH up "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
  string(REGEX REPLACE "/$" "" up "${up}")
  set(KVT_PC_PREFIX "\${pcfiledir}/${up}")
endif()
foreach(dir IN ITEMS LIBDIR INCLUDEDIR)
  set(KVT_PC_${dir} "${CMAKE_INSTALL_${dir}}")
  if(NOT IS_ABSOLUTE "${CMAKE_INSTALL_${dir}}")
    set(KVT_PC_${dir} "\${prefix}/${CMAKE_INSTALL_${dir}}")
  endif()
endforeach()
if(KVT_QT EQUAL 5)
  set(KVT_PC_QT "Qt5Core >= 5.15")
else()
  set(KVT_PC_QT "QtCore >= 4.8")
endif()
configure_file(cmake/kvt.pc.in "${KVT_GENERATED}/kvt.pc" @ONLY)
install(FILES "${KVT_GENERATED}/kvt.pc"
  DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT devel)

if(TARGET kvt)
  install(TARGETS kvt RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT tools)
  install(DIRECTORY examples/ DESTINATION "${CMAKE_INSTALL_DATADIR}/kvt/examples"
    COMPONENT tools FILES_MATCHING PATTERN "*.csv")
  install(FILES apps/kvt/completion/kvt.bash RENAME kvt
    DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" COMPONENT tools)
  install(FILES apps/kvt/completion/kvt.zsh RENAME _kvt
    DESTINATION "${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions" COMPONENT tools)
  install(FILES apps/kvt/completion/kvt.fish
    DESTINATION "${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d" COMPONENT tools)
endif()

# The guide, what it refers to, and the examples, as a project that builds.
set(KVT_DOC_DIR "${CMAKE_INSTALL_DOCDIR}")
if(KVT_DEBIAN_PACKAGES)
  set(KVT_DOC_DIR "${CMAKE_INSTALL_DATADIR}/doc/libkvt-dev")
endif()
install(FILES docs/integrating.md docs/line.md docs/protocol.md docs/versions.md
  DESTINATION "${KVT_DOC_DIR}" COMPONENT devel)
install(FILES examples/minimal_host.cpp examples/polling_host.cpp examples/installed/CMakeLists.txt
  DESTINATION "${KVT_DOC_DIR}/examples" COMPONENT devel)

# Manual pages; Debian wants them compressed.
function(kvt_install_manual section component)
  file(GLOB pages CONFIGURE_DEPENDS man/*.${section})
  if(KVT_DEBIAN_PACKAGES)
    set(compressed)
    foreach(page IN LISTS pages)
      get_filename_component(name "${page}" NAME)
      kvt_compress("${page}" "${KVT_GENERATED}/${name}.gz")
      list(APPEND compressed "${KVT_GENERATED}/${name}.gz")
    endforeach()
    set(pages ${compressed})
  endif()
  install(FILES ${pages} DESTINATION "${CMAKE_INSTALL_MANDIR}/man${section}"
    COMPONENT ${component})
endfunction()
kvt_install_manual(3 devel)
if(TARGET kvt)
  kvt_install_manual(1 tools)
endif()
