// kvt decode of a trace: what it shows, and what is chosen from it.
#include "tests/support/kvt_process.h"

#include <QTemporaryFile>
#include <QtTest>

namespace
{

QByteArray exchangeAt(const char *begin, const char *end)
{
    return begin + QByteArray(" ask 053031303532380D 8\n") + begin +
           QByteArray(" tx 053031303532380D\n") + end +
           QByteArray(" judge 063031303743310D 1 1 1 164 -1\n") + end +
           QByteArray(" end replied 1\n");
}

// The numbers of the exchanges that are shown, in their order.
QString shownExchanges(const QString &text)
{
    QStringList shown;
    for (const QString &line : text.split(QLatin1Char('\n'), Qt::SkipEmptyParts))
        shown.append(line.simplified().section(QLatin1Char(' '), 1, 1));
    shown.removeDuplicates();
    return shown.join(QLatin1Char(' '));
}

} // namespace

class TestKvtDecodeTrace : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // An hour ahead of UTC, so that a mix-up of the two shows.
    void initTestCase() { qputenv("TZ", "CET-1"); }

    void exchangesOfATraceAreChosen_data()
    {
        QTest::addColumn<QString>("options");
        QTest::addColumn<QString>("exchanges"); // that are shown
        QTest::newRow("all") << ""
                             << "0 1 2 3";
        QTest::newRow("a station") << "--station 2"
                                   << "0 2";
        QTest::newRow("no such station") << "--station 3"
                                         << "0";
        QTest::newRow("failures") << "--failures"
                                  << "0 2 3";
        QTest::newRow("failures of a station") << "--failures --station 1"
                                               << "0 3";
        QTest::newRow("one") << "--exchanges 2"
                             << "0 2";
        QTest::newRow("from one on") << "--exchanges 2-"
                                     << "0 2 3";
        QTest::newRow("some") << "--exchanges 1-2"
                              << "0 1 2";
    }

    // The third exchange succeeds at its second attempt.
    void exchangesOfATraceAreChosen()
    {
        QFETCH(QString, options);
        QFETCH(QString, exchanges);
        QTemporaryFile file;
        QVERIFY(file.open());
        file.write("kvt-trace 1 2026-11-21T14:00:00Z\n"
                   "0.000001 line up\n"
                   "0.100001 ask 053031303532380D 8\n0.100002 tx 053031303532380D\n"
                   "0.100003 rx 063031303743310D\n0.100004 judge 063031303743310D 1 1 1 164 -1\n"
                   "0.100005 end replied 1\n"
                   "0.200001 ask 053032303532380D 8\n0.200002 tx 053032303532380D\n"
                   "0.300004 judge - 41 1 2 164 -1\n0.300005 end noreply 1\n"
                   "0.400001 ask 053031303532380D 8\n0.400002 tx 053031303532380D\n"
                   "0.400004 judge - 0 1 1 164 -1\n0.400005 end brokenoff 1\n"
                   "0.500001 ask 053031303532380D 8\n0.500002 tx 053031303532380D\n"
                   "0.500004 judge 063031303743310D 1 1 1 164 -1\n0.500005 end replied 2\n");
        file.close();
        KvtProcess kvt;
        QCOMPARE(kvt.run(QStringList{QStringLiteral("decode"), file.fileName()} +
                         options.split(QLatin1Char(' '), Qt::SkipEmptyParts)),
                 0);
        const QString text = QString::fromUtf8(kvt.output());
        QCOMPARE(shownExchanges(text), exchanges);
        QCOMPARE(
            text.contains(QLatin1String("attempt 1 ended: nothing had come when the time-out was "
                                        "over")),
            exchanges.contains(QLatin1Char('2')));
        QCOMPARE(text.contains(QLatin1String("attempt 1 ended: the reply began and did not go on")),
                 exchanges.contains(QLatin1Char('3')));
    }

    void whatHappenedToTheLineIsShownWithAnyChoice_data()
    {
        QTest::addColumn<QString>("options");
        QTest::addColumn<QStringList>("shown");
        const QString up = QStringLiteral("the line is up");
        const QString down = QStringLiteral("the line is down");
        const QString one = QStringLiteral("station 1 is switched off");
        const QString two = QStringLiteral("station 2 is switched on");
        const QString lost = QStringLiteral("3 records were lost");
        QTest::newRow("failures") << "--failures" << QStringList{up, one, two, down, lost};
        QTest::newRow("a station") << "--station 2" << QStringList{up, two, down, lost};
        QTest::newRow("exchanges") << "--exchanges 2" << QStringList{down, lost};
    }

    void whatHappenedToTheLineIsShownWithAnyChoice()
    {
        QFETCH(QString, options);
        QFETCH(QStringList, shown);
        QTemporaryFile file;
        QVERIFY(file.open());
        const QByteArray exchange =
            "0.1 ask 053031303532380D 8\n0.1 tx 053031303532380D\n"
            "0.1 rx 063031303743310D\n0.1 judge 063031303743310D 1 1 1 164 -1\n"
            "0.1 end replied 1\n";
        file.write("kvt-trace 1 2026-11-21T14:00:00Z\n0.0 line up\n" + exchange +
                   "0.2 station 1 0\n0.2 station 2 1\n" + exchange + "0.3 line down\n0.3 lost 3\n");
        file.close();
        KvtProcess kvt;
        QCOMPARE(kvt.run(QStringList{QStringLiteral("decode"), file.fileName()} +
                         options.split(QLatin1Char(' '))),
                 0);
        QStringList events;
        for (const QString &line :
             QString::fromUtf8(kvt.output()).split(QLatin1Char('\n'), Qt::SkipEmptyParts))
            if (line.contains(QLatin1String("line is")) ||
                line.contains(QLatin1String("switched")) || line.contains(QLatin1String("lost")))
                events.append(line.simplified().section(QLatin1Char(' '), 2));
        QCOMPARE(events, shown);
    }

    void aTraceTellsTheTimeOfDay()
    {
        QTemporaryFile file;
        QVERIFY(file.open());
        file.write("kvt-trace 1 2026-11-21T14:00:00.250Z\n0.000001 line up\n");
        file.close();
        KvtProcess kvt;
        QCOMPARE(kvt.run({QStringLiteral("decode"), file.fileName()}), 0);
        const QString line = QString::fromUtf8(kvt.output()).section(QLatin1Char('\n'), 0, 0);
        const QString time = line.section(QLatin1String("the run began at "), 1);
        QCOMPARE(
            QDateTime::fromString(time, Qt::ISODateWithMs),
            QDateTime::fromString(QStringLiteral("2026-11-21T14:00:00.250Z"), Qt::ISODateWithMs));
    }

    void timesOfATraceAreChosen_data()
    {
        QTest::addColumn<QString>("exchanges"); // that are shown
        QTest::newRow("--from 00:00") << "0 2 3 4";
        QTest::newRow("--to 00:00") << "0 1 2";
        QTest::newRow("--from 00:00:01") << "0 3 4";
        QTest::newRow("--from 00:00:30 --to 00:01") << "0 3";
        QTest::newRow("--from 23:59:51 --to 23:59:51.999") << "0 1";
        QTest::newRow("--from 00:01 --exchanges 4") << "0 4";
        QTest::newRow("--from 23:59") << "0 4"; // has passed: that of the next day
        QTest::newRow("--from 2026-11-23T00:00") << "0 4";
        QTest::newRow("--from 2026-11-21T23:00:30Z --to 2026-11-22T00:02+01:00") << "0 3";
    }

    // Number 2 goes on over midnight, number 4 comes a day later. The line about the start of the
    // run has number 0.
    void timesOfATraceAreChosen()
    {
        QFETCH(QString, exchanges);
        QTemporaryFile file;
        QVERIFY(file.open());
        file.write("kvt-trace 1 2026-11-21T22:59:50Z\n" + exchangeAt("1.0", "1.2") +
                   exchangeAt("9.5", "10.5") + exchangeAt("70.0", "70.1") +
                   exchangeAt("86470.0", "86470.1"));
        file.close();
        QCOMPARE(shownExchanges(decoded(file.fileName())), exchanges);
    }

    void theTimeOfDayIsTheFirstInTheFile()
    {
        QTemporaryFile file;
        QVERIFY(file.open());
        file.write("kvt-trace 1 2026-11-21T22:59:50Z\n" + exchangeAt("86401.0", "86401.2") +
                   exchangeAt("86431.0", "86431.2"));
        file.close();
        KvtProcess kvt;
        QCOMPARE(kvt.run({QStringLiteral("decode"), file.fileName(), QStringLiteral("--from"),
                          QStringLiteral("23:59:51"), QStringLiteral("--to"),
                          QStringLiteral("23:59:59")}),
                 0);
        QCOMPARE(shownExchanges(QString::fromUtf8(kvt.output())), QStringLiteral("0 1"));
    }

    void timesThatCannotBeChosenAreNamed()
    {
        QTemporaryFile timeless;
        QTemporaryFile file;
        QVERIFY(timeless.open() && file.open());
        timeless.write("kvt-trace 1 now\n" + exchangeAt("1.0", "1.2"));
        timeless.close();
        file.write("kvt-trace 1 2026-11-21T22:59:50Z\n" + exchangeAt("1.0", "1.2"));
        file.close();
        QCOMPARE(faultAtBadInput({QStringLiteral("decode"), timeless.fileName(),
                                  QStringLiteral("--from"), QStringLiteral("03:00")},
                                 timeless.fileName() + QStringLiteral(": it does not tell")),
                 QString());
        QCOMPARE(faultAtBadInput({QStringLiteral("decode"), file.fileName(),
                                  QStringLiteral("--from"), QStringLiteral("2026-11-22T03:00"),
                                  QStringLiteral("--to"), QStringLiteral("2026-11-22T02:00")},
                                 QStringLiteral("--to: it is before --from")),
                 QString());
    }

    void aSingleByteIsOne()
    {
        QTemporaryFile file;
        QVERIFY(file.open());
        file.write("kvt-trace 1 2026-11-21T14:00:00Z\n0.1 lost 1\n0.2 drop stale 1\n"
                   "0.3 drop stale 2\n");
        file.close();
        KvtProcess kvt;
        QCOMPARE(kvt.run({QStringLiteral("decode"), file.fileName()}), 0);
        const QByteArray text = kvt.output();
        QVERIFY2(text.contains("  1 record was lost\n"), text.constData());
        QVERIFY2(text.contains("  1 byte dropped: stale\n"), text.constData());
        QVERIFY2(text.contains("  2 bytes dropped: stale\n"), text.constData());
    }

private:
    // What kvt makes of the file with the words that the row is named by.
    static QString decoded(const QString &path)
    {
        KvtProcess kvt;
        const QStringList options =
            QString::fromLatin1(QTest::currentDataTag()).split(QLatin1Char(' '));
        return kvt.run(QStringList{QStringLiteral("decode"), path} + options) == 0
                   ? QString::fromUtf8(kvt.output())
                   : QString();
    }
};

QTEST_GUILESS_MAIN(TestKvtDecodeTrace)
#include "tst_kvt_decode_trace.moc"
