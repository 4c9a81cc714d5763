# The Qt to build with. Sets KVT_QT_CORE and, with tests, KVT_QT_TEST to the targets to link.
#   KVT_QT=5        Qt 5.15: library, tests, host, simulator and programs
#   KVT_QT=4        Qt 4.8: library, its unit tests and the test foreign_host, with a Qt that CMake
#                   finds by its qmake, or with
#   KVT_QT4_ROOT=D  one that lies below D as include/ and lib/libQtCore.so and, for the tests,
#                   lib/libQtTest.so and bin/moc, a program of the machine that builds
set(KVT_QT 5 CACHE STRING "Qt to build with, 5 or 4")
set_property(CACHE KVT_QT PROPERTY STRINGS 5 4)
set(KVT_QT4_ROOT "" CACHE PATH "Where the Qt 4.8 lies that CMake cannot find by itself")

# Sets `variable` to KVT_QT4_ROOT/`path`, which has to be there.
function(kvt_find_in_qt4 variable path)
  if(NOT EXISTS "${KVT_QT4_ROOT}/${path}")
    message(FATAL_ERROR "KVT_QT4_ROOT: there is no ${KVT_QT4_ROOT}/${path}")
  endif()
  set(${variable} "${KVT_QT4_ROOT}/${path}" PARENT_SCOPE)
endfunction()

function(kvt_import_qt4_module module)
  kvt_find_in_qt4(library "lib/lib${module}.so")
  kvt_find_in_qt4(headers "include/${module}")
  add_library(Qt4::${module} SHARED IMPORTED GLOBAL)
  set_target_properties(Qt4::${module} PROPERTIES
    IMPORTED_LOCATION "${library}"
    INTERFACE_INCLUDE_DIRECTORIES "${KVT_QT4_ROOT}/include;${headers}"
    # or Qt's own assertions print and end the process
    INTERFACE_COMPILE_DEFINITIONS "$<$<NOT:$<CONFIG:Debug>>:QT_NO_DEBUG>")
endfunction()

function(kvt_import_qt4_moc)
  kvt_find_in_qt4(moc "bin/moc")
  add_executable(Qt4::moc IMPORTED GLOBAL)
  set_target_properties(Qt4::moc PROPERTIES IMPORTED_LOCATION "${moc}")
endfunction()

if(KVT_QT EQUAL 5)
  find_package(Qt5 5.15 REQUIRED COMPONENTS Core)
  if(KVT_BUILD_TESTS)
    find_package(Qt5 5.15 REQUIRED COMPONENTS Test)
  endif()
  set(KVT_QT_CORE Qt5::Core)
  set(KVT_QT_TEST Qt5::Test)
elseif(KVT_QT EQUAL 4)
  set(KVT_BUILD_TOOLS OFF) # they are written for Qt 5
  set(KVT_QT_CORE Qt4::QtCore)
  set(KVT_QT_TEST Qt4::QtTest)
  if(KVT_QT4_ROOT)
    kvt_import_qt4_module(QtCore)
    if(KVT_BUILD_TESTS)
      kvt_import_qt4_module(QtTest)
      kvt_import_qt4_moc()
      set(QT_VERSION_MAJOR 4) # tells AUTOMOC which moc to take
      set(QT_VERSION_MINOR 8)
    endif()
  elseif(KVT_BUILD_TESTS)
    find_package(Qt4 4.8 REQUIRED COMPONENTS QtCore QtTest)
  else()
    find_package(Qt4 4.8 REQUIRED COMPONENTS QtCore)
  endif()
else()
  message(FATAL_ERROR "KVT_QT is ${KVT_QT}; it can be 5 or 4")
endif()
