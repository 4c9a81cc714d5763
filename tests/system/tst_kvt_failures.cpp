// What kvt tells of stations that fail, and of replies that cannot be relied on.
#include "tests/support/poll_run.h"

#include <QRegularExpression>
#include <QtTest>

class TestKvtFailures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aFailingStationIsToldByWhatItDoes_data()
    {
        QTest::addColumn<QByteArray>("told");
        QTest::addColumn<QByteArray>("counted");
        QTest::newRow("noreply") << QByteArray("does not answer") << QByteArray("no reply");
        QTest::newRow("refuse") << QByteArray("refuses requests") << QByteArray("refused");
        QTest::newRow("badend") << QByteArray("answers badly (bad reply)")
                                << QByteArray("bad reply");
        QTest::newRow("truncate") << QByteArray("answers badly (reply broken off)")
                                  << QByteArray("reply broken off");
        QTest::newRow("extra") << QByteArray("cannot be heard (line disturbed)")
                               << QByteArray("line disturbed");
    }

    void aFailingStationIsToldByWhatItDoes()
    {
        QFETCH(QByteArray, told);
        QFETCH(QByteArray, counted);
        const QString fault = QString::fromLatin1(QTest::currentDataTag());
        const SimulatedLine line(SimulatedLine::Kind::Pty,
                                 {QStringLiteral("--faults"), fault + QStringLiteral("=100%@2")});
        KvtProcess kvt;
        QCOMPARE(kvt.run(pollArguments(line, "--cycles 6 --timeout 200 --retries 0")), 1);
        const QByteArray errors = kvt.errors();
        QVERIFY2(errors.contains(" station 2 " + told + " and is polled less often\n"),
                 errors.constData());
        const QByteArray summary = kvt.output();
        const QRegularExpression counts(
            QStringLiteral("\nstation 2: exchanges ([0-9]+), ok 0, failed \\1 \\(%1 \\1\\), ")
                .arg(QString::fromLatin1(counted)));
        QVERIFY2(counts.match(QString::fromUtf8(summary)).hasMatch(), summary.constData());
    }

    void aPollCountsDoubtfulReplies()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty,
                                 {QStringLiteral("--faults"), QStringLiteral("foreign=100%@2")});
        KvtProcess kvt;
        QCOMPARE(kvt.run(pollArguments(line, "--cycles 3")), 0);
        const QByteArray summary = kvt.output();
        const QRegularExpression counts(QStringLiteral(
            "\nstation 2: exchanges ([0-9]+), ok \\1, failed 0, .*, doubtful replies \\1\n"));
        const QRegularExpressionMatch match = counts.match(QString::fromUtf8(summary));
        QVERIFY2(match.hasMatch(), summary.constData());
        QVERIFY(QRegularExpression(QStringLiteral("\nstation 1: [^\n]* retries [0-9]+\n"))
                    .match(QString::fromUtf8(summary))
                    .hasMatch());
        const QByteArray errors = kvt.errors();
        QVERIFY2(errors.contains(' ' + match.captured(1).toLatin1() +
                                 " replies do not look like the station's own and were taken "),
                 errors.constData());
    }

    void doubtfulRepliesCanBeRefused()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty,
                                 {QStringLiteral("--faults"), QStringLiteral("foreign=100%@2")});
        KvtProcess kvt;
        QCOMPARE(kvt.run(pollArguments(
                     line, "--cycles 6 --timeout 200 --retries 0 --reply-check refuse")),
                 1);
        const QByteArray errors = kvt.errors();
        QVERIFY2(errors.contains(" station 2 answers badly (reply of another station) and "),
                 errors.constData());
        QVERIFY2(!errors.contains("taken all the same"), errors.constData());
        const QByteArray summary = kvt.output();
        const QRegularExpression counts(
            QStringLiteral("\nstation 2: exchanges ([0-9]+), ok 0, failed \\1 \\(reply of another "
                           "station \\1\\)"));
        QVERIFY2(counts.match(QString::fromUtf8(summary)).hasMatch(), summary.constData());
    }

    void doubtfulRepliesCanBeOverlooked()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty,
                                 {QStringLiteral("--faults"), QStringLiteral("foreign=100%@2")});
        KvtProcess kvt;
        QCOMPARE(kvt.run(pollArguments(line, "--cycles 3 --reply-check off")), 0);
        QCOMPARE(kvt.errors(), QByteArray());
        QVERIFY(!kvt.output().contains("doubtful"));
    }

    // It may answer the first attempt, late.
    void aReplyToALaterAttemptHasNoTime()
    {
        const SimulatedLine line(
            SimulatedLine::Kind::Pty,
            {QStringLiteral("--faults"),
             QStringLiteral("noreply=1-1,noreply=3-3,noreply=5-5,noreply=7-7")});
        KvtProcess read;
        QCOMPARE(read.run(line.arguments(QStringLiteral("read D 5.2.1 --timeout 300"))), 0);
        const QByteArray value = read.output();
        QVERIFY2(value.endsWith(", after 2 attempts\n") && !value.contains(" ms"),
                 value.constData());
        KvtProcess write;
        QCOMPARE(write.run(line.arguments(QStringLiteral("write D 5.2.1 7 --timeout 300"))), 0);
        QCOMPARE(write.output(),
                 QByteArray("D 5.2.1 at station 1: 7 acknowledged, after 2 attempts\n"));
        KvtProcess scan;
        const QString ask = QStringLiteral("scan --stations 1 --timeout 300 --retries 1");
        QCOMPARE(scan.run(line.arguments(ask)), 0);
        const QByteArray stations = scan.output();
        QVERIFY2(stations.startsWith("station 1 answers, after 2 attempts"), stations.constData());
        KvtProcess json;
        QCOMPARE(json.run(line.arguments(QStringLiteral("read D 5.2.1 --timeout 300 --json"))), 0);
        const QJsonObject object =
            json.outputObject().value(QStringLiteral("reads")).toArray().first().toObject();
        QCOMPARE(object.value(QStringLiteral("attempts")).toInt(), 2);
        QVERIFY(!object.contains(QStringLiteral("reply_ms")));
    }

    void aSingleDoubtfulReplyIsTold()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty,
                                 {QStringLiteral("--faults"), QStringLiteral("foreign=100%")});
        const QByteArray warning = "kvt: D 5.2.1 at station 1: the reply does not look like the "
                                   "station's own, so that it is "
                                   "doubtful: --reply-check refuse drops such replies\n";
        for (const char *command : {"read D 5.2.1", "write D 5.2.1 7"}) {
            const QString text = QLatin1String(command);
            KvtProcess kvt;
            // Nobody knows what has become of such a write.
            const bool isRead = text.startsWith(QLatin1String("read"));
            QCOMPARE(kvt.run(line.arguments(text)), isRead ? 0 : 1);
            QVERIFY2(kvt.errors().endsWith(warning), kvt.errors());
            KvtProcess careful;
            QCOMPARE(careful.run(line.arguments(text + QStringLiteral(" --strict"))), 1);
            KvtProcess strict;
            QCOMPARE(strict.run(line.arguments(
                         text + QStringLiteral(" --reply-check refuse --retries 0"))),
                     1);
            const QByteArray errors = strict.errors();
            QVERIFY2(errors.contains(": reply of another station (41)"), errors.constData());
        }
    }

    void aPollTellsHowOftenItWasOutOfStep()
    {
        const SimulatedLine clean(SimulatedLine::Kind::Tcp);
        KvtProcess quiet;
        QCOMPARE(quiet.run(pollArguments(clean, "--cycles 5 --timeout 1000")), 0);
        QVERIFY(!quiet.output().contains("out of step"));
        const SimulatedLine line(SimulatedLine::Kind::Tcp,
                                 {QStringLiteral("--faults"), QStringLiteral("extra=7")});
        KvtProcess kvt;
        QVERIFY(kvt.run(pollArguments(line, "--cycles 5 --timeout 100")) >= 0);
        const QByteArray text = kvt.output();
        QVERIFY2(text.contains("\nout of step: 1 time\n"), text.constData());
    }
};

QTEST_GUILESS_MAIN(TestKvtFailures)
#include "tst_kvt_failures.moc"
