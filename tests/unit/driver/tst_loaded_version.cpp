// The version that a loaded library tells, and that the headers name.
#include "driver/entry_points.h"
#include "driver/loaded_version.h"

#include <QtTest/QtTest>

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
        return QByteArray(reinterpret_cast<const char *>(&note), sizeof note);
    }
};

QTEST_MAIN(TestLoadedVersion)

#include "tst_loaded_version.moc"
