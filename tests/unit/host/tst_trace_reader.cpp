// Traces that were damaged on their way.
#include "host/trace_reader.h"

#include "tests/support/damage.h"

#include <QTemporaryDir>
#include <QtTest>

using namespace kvt;

class TestTraceReader : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void recordsBelongToTheirExchange()
    {
        TraceReader reader;
        QString error;
        QVERIFY(reader.open(fileOf("kvt-trace 1 now\n"
                                   "0.000001 list 1\n"
                                   "0.000002 ask 053031 8\n"
                                   "0.000003 judge - 0 1 1 165 -1\n"
                                   "0.000004 ask 053031 8\n"
                                   "0.000005 judge - 41 1 1 165 -1\n"
                                   "0.000006 ask 053031 8\n"),
                            &error));
        TraceRecord record;
        QVector<int> exchanges;
        while (reader.next(&record))
            exchanges.append(record.exchange);
        QVERIFY(reader.error().isEmpty());
        QCOMPARE(exchanges, QVector<int>({0, 1, 1, 1, 1, 2}));
        QCOMPARE(record.line, 7);
        QCOMPARE(record.bytes(0), QByteArray("\x05"
                                             "01"));
        QCOMPARE(record.number(1), 8);
    }

    void aLineThatIsNoRecordIsNamed_data()
    {
        QTest::addColumn<QByteArray>("line");
        for (const char *line : {"",
                                 " ",
                                 "0.1",
                                 "0.1 ",
                                 "0.1 asked 05 8",
                                 "0.1 ask 05",
                                 "0.1 ask 05 8 9",
                                 "0.1 ask 05 x",
                                 "0.1 ask 0 8",
                                 "0.1 ask 0g 8",
                                 "0.1 ask 0a 8",
                                 "x ask 05 8",
                                 "0.1  ask 05 8",
                                 "0.1 ask 05  8",
                                 "0.1 judge 05 1 1 1 99999999999 1",
                                 "0.1 local",
                                 "0.1.2 ask 05 8",
                                 ". ask 05 8",
                                 "99999999999999999999 ask 05 8",
                                 "0.1 full now",
                                 "0.1 value 2 1 1.1.1.1 1001 1 -",
                                 "0.1 value 2 1 1.1.1.1 x 1 -"})
            QTest::newRow(line) << QByteArray(line);
    }

    void aLineThatIsNoRecordIsNamed()
    {
        QFETCH(QByteArray, line);
        TraceReader reader;
        QString error;
        QVERIFY(reader.open(fileOf("kvt-trace 1 now\n0.1 ask 05 8\n" + line + "\n0.1 list 1\n"),
                            &error));
        TraceRecord record;
        QVERIFY(reader.next(&record));
        QVERIFY(!reader.next(&record));
        QVERIFY2(reader.error().startsWith(QStringLiteral("line 3 (exchange 1): ")),
                 qPrintable(reader.error()));
    }

    void aLastLineThatWasCutOffIsPassedOver()
    {
        TraceReader reader;
        QString error;
        QVERIFY(reader.open(fileOf("kvt-trace 1 now\n0.1 list 1\n0.1 ask 05"), &error));
        TraceRecord record;
        QVERIFY(reader.next(&record));
        QVERIFY(!reader.next(&record));
        QVERIFY(reader.error().isEmpty());
    }

    void whatIsNoTraceIsNotOpened_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("another version") << QByteArray("kvt-trace 2 now\n");
        QTest::newRow("zeros") << QByteArray(100000, '\0');
        QTest::newRow("a tag list") << QByteArray("name,area,address\n");
    }

    void whatIsNoTraceIsNotOpened()
    {
        QFETCH(QByteArray, content);
        TraceReader reader;
        QString error;
        QVERIFY(!reader.open(fileOf(content), &error));
        QVERIFY(!error.isEmpty());
        QVERIFY(!TraceReader().open(folder_.filePath(QStringLiteral("missing")), &error));
        QVERIFY(!TraceReader().open(folder_.path(), &error));
    }

    void aDamagedTraceIsReadUpToTheDamage()
    {
        const QByteArray whole = "kvt-trace 1 now\n0.000001 list 1\n0.000002 ask 053031 8\n"
                                 "0.000003 tx 053031\n0.000004 judge - 0 1 1 165 -1\n";
        QStringList records;
        QVERIFY2(readTrace(whole, &records).isEmpty(), qPrintable(readTrace(whole, &records)));
        QCOMPARE(records.size(), 4);
        QCOMPARE(faultAtDamage(whole,
                               [&](const QByteArray &damaged) {
                                   int same = 0; // bytes before the damage
                                   while (same < damaged.size() && same < whole.size() &&
                                          damaged.at(same) == whole.at(same))
                                       ++same;
                                   return faultOf(damaged, records,
                                                  whole.left(same).count('\n') - 1);
                               }),
                 QString());
    }

private:
    QTemporaryDir folder_;

    QString fileOf(const QByteArray &content) const
    {
        QFile file(folder_.filePath(QStringLiteral("trace")));
        if (file.open(QIODevice::WriteOnly))
            file.write(content);
        return file.fileName();
    }

    // Appends what is read, one text a record, and returns the error.
    QString readTrace(const QByteArray &content, QStringList *records) const
    {
        records->clear();
        TraceReader reader;
        QString error;
        if (!reader.open(fileOf(content), &error))
            return error;
        TraceRecord record;
        while (reader.next(&record))
            records->append(QString::fromLatin1(record.stamp + ' ' + record.name + ' ' +
                                                record.words.join(' ')));
        return reader.error();
    }

    // Says what is wrong with the reading of a trace of which the first `undamaged` records are
    // whole.
    QString faultOf(const QByteArray &content, const QStringList &expected, int undamaged) const
    {
        QStringList records;
        const QString error = readTrace(content, &records);
        const int lines = 1 + content.count('\n');
        if (records.mid(0, qMax(undamaged, 0)) != expected.mid(0, qMax(undamaged, 0)))
            return QStringLiteral("lost what stands before the damage");
        if (records.size() > lines)
            return QStringLiteral("more records than lines");
        return error.isEmpty() || error.startsWith(QLatin1String("line "))
                   ? QString()
                   : QStringLiteral("no place: ") + error;
    }
};

QTEST_GUILESS_MAIN(TestTraceReader)
#include "tst_trace_reader.moc"
