# The Qt to build with. Sets KVT_QT_CORE and, with Qt 5, KVT_QT_TEST to the targets to link.
#   KVT_QT=5        Qt 5.15: library, tests, host, simulator and programs
#   KVT_QT=4        Qt 4.8: library and the test foreign_host, with a Qt that CMake finds by its
#                   qmake, or with
#   KVT_QT4_ROOT=D  one that lies below D as include/ and lib/libQtCore.so
set(KVT_QT 5 CACHE STRING "Qt to build with, 5 or 4")
set_property(CACHE KVT_QT PROPERTY STRINGS 5 4)
set(KVT_QT4_ROOT "" CACHE PATH "Where the Qt 4.8 lies that CMake cannot find by itself")

function(kvt_import_qt4)
  set(library "${KVT_QT4_ROOT}/lib/libQtCore.so")
  set(headers "${KVT_QT4_ROOT}/include/QtCore")
  foreach(path IN ITEMS "${library}" "${headers}")
    if(NOT EXISTS "${path}")
      message(FATAL_ERROR "KVT_QT4_ROOT: there is no ${path}")
    endif()
  endforeach()
  add_library(Qt4::QtCore SHARED IMPORTED GLOBAL)
  set_target_properties(Qt4::QtCore PROPERTIES
    IMPORTED_LOCATION "${library}"
    INTERFACE_INCLUDE_DIRECTORIES "${KVT_QT4_ROOT}/include;${headers}")
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
  if(KVT_QT4_ROOT)
    kvt_import_qt4()
  else()
    find_package(Qt4 4.8 REQUIRED COMPONENTS QtCore)
  endif()
else()
  message(FATAL_ERROR "KVT_QT is ${KVT_QT}; it can be 5 or 4")
endif()
