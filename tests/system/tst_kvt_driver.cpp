// Which driver kvt loads, and what it says of it.
#include "driver/version.h"
#include "tests/support/simulated_line.h"

#include <QtTest>

class TestKvtDriver : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(QFile::link(QStringLiteral(KVT_LIBRARY), file_)); }

    void theOneLoadedIsNamedOnce_data()
    {
        QTest::addColumn<QStringList>("option");
        QTest::addColumn<bool>("isMine");
        QTest::newRow("the usual one") << QStringList() << false;
        QTest::newRow("a path") << QStringList{QStringLiteral("--driver"), file_} << true;
        QTest::newRow("a name") << QStringList{QStringLiteral("--driver"),
                                               QStringLiteral("libmine.so")}
                                << true;
    }

    // A tune opens the line, and with it the driver, several times.
    void theOneLoadedIsNamedOnce()
    {
        QFETCH(QStringList, option);
        QFETCH(bool, isMine);
        qputenv("LD_LIBRARY_PATH", QFile::encodeName(folder_.path()));
        const SimulatedLine line(SimulatedLine::Kind::Pty);
        KvtProcess kvt;
        const QString errors = folder_.filePath(QStringLiteral("errors"));
        kvt.sendErrorsTo(errors);
        QCOMPARE(
            kvt.run(line.arguments(QStringLiteral("tune --exchanges 2 --tags ") + line.tagFile()) +
                    option),
            0);
        qunsetenv("LD_LIBRARY_PATH");
        QFile said(errors);
        QVERIFY(said.open(QIODevice::ReadOnly));
        const QByteArray text = said.readAll();
        QCOMPARE(text.count("kvt: driver "), 1);
        QVERIFY2(text.contains(", version " KVT_VERSION_STRING "\n"), text.constData());
        QCOMPARE(text.contains("kvt: driver " + QFile::encodeName(file_) + ", "), isMine);
    }

    void oneWithoutAPathIsNotTakenFromTheFolder()
    {
        const QStringList arguments = {QStringLiteral("read"),         QStringLiteral("D"),
                                       QStringLiteral("1.2.0"),        QStringLiteral("--serial"),
                                       QStringLiteral("/nowhere/plc"), QStringLiteral("--driver")};
        KvtProcess name;
        name.runIn(folder_.path());
        QCOMPARE(name.run(arguments + QStringList(QStringLiteral("libmine.so"))), 2);
        const QByteArray errors = name.errors();
        QVERIFY2(errors.endsWith("; the file in this folder is ./libmine.so\n"),
                 errors.constData());
        KvtProcess path;
        path.runIn(folder_.path());
        QCOMPARE(path.run(arguments + QStringList(QStringLiteral("./libmine.so"))), 3);
    }

private:
    QTemporaryDir folder_;
    QString file_ = folder_.filePath(QStringLiteral("libmine.so"));
};

QTEST_GUILESS_MAIN(TestKvtDriver)
#include "tst_kvt_driver.moc"
