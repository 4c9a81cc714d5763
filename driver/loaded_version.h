// Asks a library that is loaded for its version. Nothing to link: it reads the note that the linker
// has left in the library's memory.
#ifndef KVT_DRIVER_LOADED_VERSION_H
#define KVT_DRIVER_LOADED_VERSION_H

#include "driver/version.h"
#include "driver/version_note.h"

#include <cstdint>
#include <cstring>
#include <link.h>

/// What kvtLoadedVersion asks each loaded file, and what it has found.
struct KvtVersionSearch {
    std::uintptr_t address; ///< lies in the file that is asked for
    int version;            ///< its version, 0 until found
};

/// The version in the notes from `notes` on, `size` bytes of them, or 0.
inline int kvtVersionInNotes(const char *notes, std::size_t size)
{
    while (size >= sizeof(KvtVersionNote)) {
        KvtVersionNote note;
        std::memcpy(&note, notes, sizeof note);
        const bool ours = note.type == KVT_NOTE_VERSION && note.nameSize == sizeof note.name &&
                          std::memcmp(note.name, KVT_NOTE_NAME, sizeof note.name) == 0;
        if (ours)
            return static_cast<int>(KVT_VERSION_CHECK(note.major, note.minor, note.patch));
        const std::size_t words =
            (note.nameSize + std::size_t(3)) / 4 + (note.descriptorSize + std::size_t(3)) / 4 + 3;
        if (words > size / 4)
            return 0;
        notes += words * 4;
        size -= words * 4;
    }
    return 0;
}

/// Looks into one loaded file; 1 when it is the one that is asked for. For dl_iterate_phdr.
inline int kvtVersionInFile(dl_phdr_info *file, std::size_t, void *search)
{
    KvtVersionSearch &asked = *static_cast<KvtVersionSearch *>(search);
    const std::uintptr_t start = file->dlpi_addr;
    bool found = false;
    int version = 0;
    for (int i = 0; i < file->dlpi_phnum; ++i) {
        const ElfW(Phdr) &part = file->dlpi_phdr[i];
        const std::uintptr_t first = start + part.p_vaddr;
        if (part.p_type == PT_LOAD && asked.address - first < part.p_memsz)
            found = true;
        // 64-bit linkers put notes aligned to 8, which are not ours, into a part of their own.
        if (part.p_type == PT_NOTE && part.p_align <= 4 && version == 0)
            // NOLINTNEXTLINE(performance-no-int-to-ptr): the loader tells places as numbers
            version = kvtVersionInNotes(reinterpret_cast<const char *>(first), part.p_memsz);
    }
    if (found)
        asked.version = version;
    return found ? 1 : 0;
}

/// The version, comparable with KVT_VERSION, of the loaded library that `entryPoint` lies in, which
/// is the address of one of its functions as dlsym gives it. 0 for null, for an address in no
/// loaded file, and for a library that does not tell. Any thread; takes the loader's lock.
inline int kvtLoadedVersion(const void *entryPoint)
{
    KvtVersionSearch search = {reinterpret_cast<std::uintptr_t>(entryPoint), 0};
    dl_iterate_phdr(kvtVersionInFile, &search);
    return search.version;
}

#endif
