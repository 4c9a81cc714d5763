# 32-bit ARM, hard float, with the distribution's cross compiler. The packages of that architecture
# lie in KVT_ARMHF_ROOT (see scripts/armhf-root). There is no sysroot: the compiler brings a C
# library of its own, and only Qt is looked for in the root.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)

set(KVT_ARMHF_ROOT "" CACHE PATH "Directory that the ARM packages are unpacked in")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES KVT_ARMHF_ROOT)
set(CMAKE_FIND_ROOT_PATH "${KVT_ARMHF_ROOT}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Libraries that Qt itself needs are found by the linker here.
set(CMAKE_EXE_LINKER_FLAGS_INIT
    "-Wl,-rpath-link,${KVT_ARMHF_ROOT}/usr/lib/arm-linux-gnueabihf:${KVT_ARMHF_ROOT}/lib/arm-linux-gnueabihf")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "${CMAKE_EXE_LINKER_FLAGS_INIT}")

set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm -L "${KVT_ARMHF_ROOT}")
