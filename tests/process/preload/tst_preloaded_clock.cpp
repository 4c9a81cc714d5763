// kvt where the clock on the wall is set again and again.
#include "tests/process/torture.h"

#include <QDateTime>
#include <QtTest>

class TestPreloadedClock : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aClockThatJumpsChangesTimesOfDayAlone()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty, constantValues());
        ValueJudge judge(line);
        QVERIFY(judge.isReady());
        const QString trace = line.filePath(QStringLiteral("trace"));
        KvtProcess kvt;
        kvt.setVariable(QStringLiteral("LD_PRELOAD"), QStringLiteral(KVT_JUMPING_CLOCK));
        kvt.start(pollArguments(line, "--json --interval 20 --timeout 10000 --seconds 2") +
                  QStringList{QStringLiteral("--trace"), trace});
        QCOMPARE(kvt.finish(), 0);
        double elapsed_ms = 0;
        QDateTime earliest = QDateTime::currentDateTime();
        QDateTime latest = earliest;
        for (const QJsonObject &shown : objects(&kvt)) {
            judge.sees(shown);
            const double now_ms = shown.value(QStringLiteral("elapsed_ms")).toDouble(-1);
            QVERIFY(now_ms >= elapsed_ms && now_ms < 120000);
            elapsed_ms = now_ms;
            const QDateTime time = QDateTime::fromString(
                shown.value(QStringLiteral("time")).toString(), Qt::ISODateWithMs);
            earliest = qMin(earliest, time);
            latest = qMax(latest, time);
            for (const QJsonValue &tag : shown.value(QStringLiteral("tags")).toArray()) {
                const double age_ms = tag[QStringLiteral("age_ms")].toDouble();
                QVERIFY(age_ms >= 0 && age_ms <= now_ms);
            }
        }
        QVERIFY(earliest.secsTo(latest) > 86400); // the clock did jump
        QCOMPARE(judge.wrong(), 0);
        KvtProcess decode;
        QCOMPARE(decode.run({QStringLiteral("decode"), trace}), 0);
        KvtProcess replay;
        QCOMPARE(replay.run({QStringLiteral("replay"), trace}), 0);
    }
};

QTEST_GUILESS_MAIN(TestPreloadedClock)
#include "tst_preloaded_clock.moc"
