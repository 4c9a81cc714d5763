// The version that a loaded library tells, and that the headers name.
#include "driver/entry_points.h"
#include "driver/loaded_version.h"

#include <QtTest/QtTest>

#include <QtCore/QFile>

#include <dlfcn.h>

class TestLoadedVersion : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theHeadersNameOneVersion()
    {
        QCOMPARE(KVT_VERSION,
                 KVT_VERSION_MAJOR * 10000 + KVT_VERSION_MINOR * 100 + KVT_VERSION_PATCH);
        const QByteArray text = QByteArray::number(KVT_VERSION_MAJOR) + "." +
                                QByteArray::number(KVT_VERSION_MINOR) + "." +
                                QByteArray::number(KVT_VERSION_PATCH);
        QCOMPARE(QByteArray(KVT_VERSION_STRING), text);
    }

    void theLibraryTellsIts()
    {
        void *library = dlopen(KVT_LIBRARY, RTLD_NOW | RTLD_LOCAL);
        QVERIFY(library != nullptr);
        QCOMPARE(kvtLoadedVersion(dlsym(library, "SetComInfo")), KVT_VERSION);
        QCOMPARE(kvtLoadedVersion(dlsym(library, "DataCom")), KVT_VERSION);
        dlclose(library);
    }

    // For tools, which go by the sizes.
    void theNoteIsWholeInTheLibrarysFile()
    {
        QFile file(QLatin1String(KVT_LIBRARY));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const KvtVersionNote note = {
            4, 12, 1, "KVT", KVT_VERSION_MAJOR, KVT_VERSION_MINOR, KVT_VERSION_PATCH};
        QVERIFY(file.readAll().contains(bytesOf(note)));
    }

    void aFileIsKnownByTheAddressesOfItsParts()
    {
        const QByteArray notes = ours();
        for (const std::uintptr_t offset : {0, 1, 99})
            QCOMPARE(versionIn(notes, PT_NOTE, 4, offset), 20304);
        QCOMPARE(versionIn(notes, PT_NOTE, 4, 100), -1);
        QCOMPARE(versionIn(notes, PT_NOTE, 4, std::uintptr_t(-1)), -1);
    }

    void notesAreLookedForWhereTheyCanBe()
    {
        const QByteArray notes = ours();
        QCOMPARE(versionIn(notes, PT_NOTE, 0, 50), 20304);
        QCOMPARE(versionIn(notes, PT_NOTE, 8, 50), 0);
        QCOMPARE(versionIn(notes, PT_DYNAMIC, 4, 50), 0);
    }

    void theFirstVersionCounts()
    {
        QByteArray second = ours();
        second[16] = 9;
        const QByteArray first = ours();
        QCOMPARE(versionIn(first, PT_NOTE, 4, 50, second), 20304);
    }

    void anotherLibraryTellsNone()
    {
        QCOMPARE(kvtLoadedVersion(dlsym(RTLD_DEFAULT, "malloc")), 0);
        QCOMPARE(kvtLoadedVersion(nullptr), 0);
        const char onTheStack = 0;
        QCOMPARE(kvtLoadedVersion(&onTheStack), 0);
    }

    void theNoteIsFoundBehindOthers()
    {
        // One of type 7 with an owner of 5 bytes and 2 of content, and then ours.
        const QByteArray before("\5\0\0\0\2\0\0\0\7\0\0\0"
                                "Abcd\0\0\0\0"
                                "xy\0\0",
                                24);
        const QByteArray notes = before + ours();
        QCOMPARE(kvtVersionInNotes(notes.constData(), 52), 20304);
        for (std::size_t size = 0; size < 52; ++size)
            QCOMPARE(kvtVersionInNotes(notes.constData(), size), 0);
    }

    void theNoteIsFoundBehindALongOne()
    {
        QByteArray before("\4\0\0\0\144\0\0\0\7\0\0\0Abc\0", 16);
        before.append(QByteArray(100, 'x'));
        const QByteArray notes = before + ours();
        QCOMPARE(kvtVersionInNotes(notes.constData(), 144), 20304);
    }

    void aNoteThatClaimsMoreThanThereIsEndsTheSearch()
    {
        const QByteArray claiming("\4\0\0\0\50\0\0\0\7\0\0\0Abc\0", 16);
        const QByteArray notes = claiming + QByteArray(40, 'x') + ours();
        QCOMPARE(kvtVersionInNotes(notes.constData(), 28), 0);
        QCOMPARE(kvtVersionInNotes(notes.constData(), 84), 20304);
    }

    void notesOfOthersAreNotTaken()
    {
        QByteArray otherType = ours();
        otherType[8] = 2;
        QCOMPARE(kvtVersionInNotes(otherType.constData(), 28), 0);
        QByteArray otherOwner = ours();
        otherOwner[12] = 'X';
        QCOMPARE(kvtVersionInNotes(otherOwner.constData(), 28), 0);
        QByteArray hugeOwner = otherType;
        for (int i = 0; i < 8; ++i)
            hugeOwner[i] = '\xFF';
        QCOMPARE(kvtVersionInNotes(hugeOwner.constData(), 28), 0);
    }

private:
    static QByteArray ours()
    {
        const KvtVersionNote note = {4, 12, KVT_NOTE_VERSION, KVT_NOTE_NAME, 2, 3, 4};
        return bytesOf(note);
    }

    static QByteArray bytesOf(const KvtVersionNote &note)
    {
        return QByteArray(reinterpret_cast<const char *>(&note), sizeof note);
    }

    /// Asks for the address `offset` bytes behind the start of a loaded file of 100 bytes, which
    /// has `notes` in a part of this type and alignment, and behind that one with `more` notes.
    /// Returns the version found, -1 when the address is not the file's.
    static int versionIn(const QByteArray &notes, quint32 type, quint64 alignment,
                         std::uintptr_t offset, const QByteArray &more = QByteArray())
    {
        ElfW(Phdr) parts[4] = {}; // the last is not counted
        const QByteArray contents[] = {notes, more};
        for (int i = 0; i < 2; ++i) {
            parts[i].p_type = type;
            parts[i].p_align = static_cast<decltype(parts[i].p_align)>(alignment);
            parts[i].p_vaddr = reinterpret_cast<std::uintptr_t>(contents[i].constData());
            parts[i].p_memsz = static_cast<decltype(parts[i].p_memsz)>(contents[i].size());
        }
        parts[2].p_type = PT_LOAD;
        parts[2].p_vaddr = 4096;
        parts[2].p_memsz = 100;
        parts[3] = parts[2];
        parts[3].p_memsz = 200;
        dl_phdr_info file = {};
        file.dlpi_phdr = parts;
        file.dlpi_phnum = 3;
        KvtVersionSearch search = {4096 + offset, -1};
        const int found = kvtVersionInFile(&file, sizeof file, &search);
        return found == 1 ? search.version : -1;
    }
};

QTEST_MAIN(TestLoadedVersion)

#include "tst_loaded_version.moc"
