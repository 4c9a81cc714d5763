# What every target of the project is compiled and linked with.
option(KVT_WERROR "Treat warnings as errors; the scripts and the presets do" OFF)
option(KVT_HARDEN "Stack protector, checked library calls, memory read-only after relocation" ON)

add_library(kvt_options INTERFACE)
target_include_directories(kvt_options INTERFACE "${PROJECT_SOURCE_DIR}")
target_compile_options(kvt_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion
                                             $<$<BOOL:${KVT_WERROR}>:-Werror>)
target_compile_definitions(kvt_options INTERFACE QT_NO_KEYWORDS QT_NO_CAST_TO_ASCII)
# Where -flto is asked for, the library alone is optimised so. A program that is optimised when it is
# linked is no position independent code any more: it would have copies of Qt's and the driver's
# variables, which the libraries do not look at.
if(CMAKE_CXX_FLAGS MATCHES "-flto" OR CMAKE_INTERPROCEDURAL_OPTIMIZATION)
  target_compile_options(kvt_options INTERFACE
    $<$<NOT:$<STREQUAL:$<TARGET_PROPERTY:NAME>,KVT>>:-fno-lto>)
endif()

if(KVT_HARDEN)
  # Of the driver's functions those with a buffer are guarded: to guard all that take an address would
  # cost each exchange some fifty instructions.
  target_compile_options(kvt_options INTERFACE
    -fstack-protector$<$<NOT:$<STREQUAL:$<TARGET_PROPERTY:NAME>,KVT>>:-strong>)
  # glibc warns where nothing is optimised. A distribution may have asked for a level already.
  if(NOT KVT_COVERAGE AND NOT KVT_SANITIZE AND NOT CMAKE_CXX_FLAGS MATCHES "_FORTIFY_SOURCE|-O0")
    target_compile_definitions(kvt_options INTERFACE
      $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:_FORTIFY_SOURCE=2>)
  endif()
  target_link_options(kvt_options INTERFACE LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack)
endif()
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)

if(KVT_SANITIZE)
  target_compile_options(kvt_options INTERFACE -fsanitize=${KVT_SANITIZE} -fno-omit-frame-pointer
                                               -fno-sanitize-recover=all)
  target_link_options(kvt_options INTERFACE -fsanitize=${KVT_SANITIZE})
endif()

if(KVT_COVERAGE)
  # Threads count too.
  target_compile_options(kvt_options INTERFACE --coverage -O0 -fprofile-update=atomic)
  target_link_options(kvt_options INTERFACE --coverage)
endif()
