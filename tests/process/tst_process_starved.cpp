// kvt on a processor that others have taken.
#include "tests/process/torture.h"

#include <QThread>
#include <QtTest>

#include <vector>

class TestProcessStarved : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aStarvedPollFailsByTimeAlone_data() { addLineRows(); }

    // Nothing but time is missing, so nothing but the lack of it may be told.
    void aStarvedPollFailsByTimeAlone()
    {
        QFETCH(SimulatedLine::Kind, kind);
        const SimulatedLine line(kind, constantValues());
        ValueJudge judge(line);
        QVERIFY(judge.isReady());
        std::vector<std::unique_ptr<QProcess>> busy;
        for (int i = 0; i < 2 * QThread::idealThreadCount(); ++i) {
            busy.push_back(std::make_unique<QProcess>());
            busy.back()->start(QStringLiteral("bash"),
                               {QStringLiteral("-c"), QStringLiteral("while :; do :; done")});
        }
        KvtProcess kvt;
        kvt.startBehind(
            QStringLiteral("renice -n 19 $$ >&2"),
            pollArguments(line, "--json --interval 20 --timeout 20") +
                QStringList{QStringLiteral("--seconds"), QString::number(effort(2, 15))});
        const int status = kvt.finish();
        for (const std::unique_ptr<QProcess> &process : busy) {
            process->kill();
            process->waitForFinished();
        }
        QVERIFY(status == 0 || status == 1);
        const QJsonObject total = totalOf(judge.seesTheRest(&kvt));
        QVERIFY(total.value(QStringLiteral("exchanges")).toInt() > 0);
        const QJsonObject outcomes = total.value(QStringLiteral("outcomes")).toObject();
        int expected = 0;
        for (const char *outcome : {"ok", "no_reply", "line_disturbed"})
            expected += outcomes.value(QLatin1String(outcome)).toInt();
        QCOMPARE(expected, total.value(QStringLiteral("exchanges")).toInt());
        QCOMPARE(judge.wrong(), 0);
    }
};

QTEST_GUILESS_MAIN(TestProcessStarved)
#include "tst_process_starved.moc"
