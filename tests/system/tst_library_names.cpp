// The built library in a host that has variables with the library's names, and shows them to it.
#include "tests/support/loaded_driver.h"

#include <QtTest>

// Of other types than the library's, which would write pointers over them.
extern Q_DECL_EXPORT quint16 LB[4];
extern Q_DECL_EXPORT quint16 LW[4];
extern Q_DECL_EXPORT quint16 RWI[4];
quint16 LB[4] = {1, 2, 3, 4};
quint16 LW[4] = {5, 6, 7, 8};
quint16 RWI[4] = {9, 10, 11, 12};

namespace
{

QByteArray bytesOf(const quint16 (&words)[4])
{
    return QByteArray(reinterpret_cast<const char *>(words), int(sizeof words));
}

} // namespace

class LibraryNamesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void variablesOfTheHostAreLeftAlone()
    {
        QCOMPARE(::dlsym(RTLD_DEFAULT, "LW"), static_cast<void *>(LW));
        const QByteArray before = bytesOf(LB) + bytesOf(LW) + bytesOf(RWI);
        const LoadedDriver driver(KVT_LIBRARY);
        QVERIFY(driver.isComplete());
        QVERIFY(driver.find("LW") != LW);
        quint16 area[4] = {};
        driver.flashLocalRegister(area, area, area);
        QCOMPARE(bytesOf(LB) + bytesOf(LW) + bytesOf(RWI), before);
        QCOMPARE(*static_cast<void **>(driver.find("LW")), static_cast<void *>(area));
    }
};

QTEST_APPLESS_MAIN(LibraryNamesTest)
#include "tst_library_names.moc"
