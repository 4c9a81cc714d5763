#include "driver/version_note.h"

#include "driver/version.h"

// Nothing refers to it: the linker keeps notes, and the loader maps them.
__attribute__((section(".note.kvt.version"), used,
               aligned(4))) static const KvtVersionNote versionNote = {
    sizeof versionNote.name, 3 * sizeof(quint32), KVT_NOTE_VERSION, KVT_NOTE_NAME,
    KVT_VERSION_MAJOR,       KVT_VERSION_MINOR,   KVT_VERSION_PATCH};
