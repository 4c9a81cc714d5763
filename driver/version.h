// Version of the library that these headers belong to. The build takes it from here.
#ifndef KVT_DRIVER_VERSION_H
#define KVT_DRIVER_VERSION_H

/// Grows when hosts that are built already would notice a change of the interface.
#define KVT_VERSION_MAJOR 1
/// Grows when something is added.
#define KVT_VERSION_MINOR 0
/// Grows when something is mended.
#define KVT_VERSION_PATCH 0

/// A version as one number, to compare with KVT_VERSION: 1.2.3 is 10203. Each part 0 to 99.
#define KVT_VERSION_CHECK(major, minor, patch) ((major)*10000 + (minor)*100 + (patch))

/// The version of the headers. That of the library is told by driver/loaded_version.h.
#define KVT_VERSION KVT_VERSION_CHECK(KVT_VERSION_MAJOR, KVT_VERSION_MINOR, KVT_VERSION_PATCH)

/// For KVT_VERSION_STRING alone, as the next one.
#define KVT_VERSION_TEXT(number) #number
/// See above.
#define KVT_VERSION_JOIN(major, minor, patch)                                                      \
    KVT_VERSION_TEXT(major) "." KVT_VERSION_TEXT(minor) "." KVT_VERSION_TEXT(patch)

/// The same as text: "1.2.3".
#define KVT_VERSION_STRING KVT_VERSION_JOIN(KVT_VERSION_MAJOR, KVT_VERSION_MINOR, KVT_VERSION_PATCH)

#endif
