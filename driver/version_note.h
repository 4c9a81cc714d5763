// The note in the library's file that tells its version, to tools ("readelf -n") and to hosts.
#ifndef KVT_DRIVER_VERSION_NOTE_H
#define KVT_DRIVER_VERSION_NOTE_H

#include <QtCore/QtGlobal>

/// The owner that the note names.
#define KVT_NOTE_NAME "KVT"

/// An ELF note: its header, its owner and the version. Every member is a 32-bit word or fills some.
struct KvtVersionNote {
    quint32 nameSize;       ///< 4
    quint32 descriptorSize; ///< 12
    quint32 type;           ///< KVT_NOTE_VERSION
    char name[4];           ///< KVT_NOTE_NAME and its terminator
    quint32 major;          ///< KVT_VERSION_MAJOR of the library
    quint32 minor;          ///< KVT_VERSION_MINOR
    quint32 patch;          ///< KVT_VERSION_PATCH
};
static_assert(sizeof(KvtVersionNote) == 28, "KvtVersionNote: seven words");

/// The type of the note.
constexpr quint32 KVT_NOTE_VERSION = 1;

#endif
