// kvt poll: intervals, deadbands and alarms of a list.
#include "tests/support/poll_run.h"

#include <QtTest>

namespace
{

/// Polls the cells of the simulated PLC by a list of its own. Returns what is printed.
QByteArray polled(const SimulatedLine &line, const QByteArray &list, const char *options,
                  KvtProcess *kvt)
{
    const QString path = line.filePath(QStringLiteral("watched.csv"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(list) != list.size())
        qFatal("cannot write a list");
    file.close();
    QStringList words = line.arguments(QStringLiteral("poll ") + QLatin1String(options));
    words << QStringLiteral("--tags") << path;
    if (kvt->run(words) != 0)
        qWarning("%s", kvt->errors().constData());
    return kvt->output();
}

QJsonObject lastObject(const QByteArray &output)
{
    return QJsonDocument::fromJson(output.trimmed().split('\n').last()).object();
}

} // namespace

class TestKvtPollWatch : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // No word is below 0, so that one of them is in alarm from the first reading on.
    void alarmsAreShownAndTold()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty);
        KvtProcess kvt;
        const QByteArray output = polled(line,
                                         "name,area,address,station,type,hi,hihi,priority,"
                                         "alarm_text\n"
                                         "level,D,5.2.1,1,u16,-1,70000,high,too full\n"
                                         "valve,X,1.2.0,1,u8,300,,,\n"
                                         "speed,D,5.2.1,2,u16,,,,\n",
                                         "--seconds 1 --json", &kvt);
        const QByteArray errors = kvt.errors();
        QCOMPARE(errors.count("alarm of"), 1);
        QVERIFY2(errors.contains(" alarm of level: unacknowledged, hi, priority high: too full\n"),
                 errors);
        const QJsonObject last = lastObject(output);
        const QJsonValue alarm = tagOf(last, "level").value(QStringLiteral("alarm"));
        QCOMPARE(alarm[QStringLiteral("state")].toString(), QStringLiteral("unacknowledged"));
        QCOMPARE(alarm[QStringLiteral("level")].toString(), QStringLiteral("hi"));
        QCOMPARE(alarm[QStringLiteral("acknowledged")].toBool(true), false);
        QCOMPARE(alarm[QStringLiteral("priority")].toString(), QStringLiteral("high"));
        QCOMPARE(alarm[QStringLiteral("text")].toString(), QStringLiteral("too full"));
        const QJsonValue normal = tagOf(last, "valve").value(QStringLiteral("alarm"));
        QCOMPARE(normal[QStringLiteral("state")].toString(), QStringLiteral("normal"));
        QCOMPARE(normal[QStringLiteral("priority")].toString(), QStringLiteral("medium"));
        QVERIFY(!tagOf(last, "speed").contains(QStringLiteral("alarm")));
    }

    // Both count up at each reading.
    void aDeadbandKeepsSmallChangesBack()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty,
                                 {QStringLiteral("--values"), QStringLiteral("counter")});
        KvtProcess kvt;
        const QByteArray output = polled(line,
                                         "name,area,address,station,type,deadband\n"
                                         "level,D,5.2.1,1,u16,70000\n"
                                         "speed,D,5.2.1,2,u16,\n",
                                         "--seconds 1 --interval 50", &kvt);
        QVERIFY2(output.count("  speed  ") > 3, output);
        QCOMPARE(output.count("  level  "), 1 + output.count("  level  -  never read"));
    }

    void intervalsAreKeptAndCounted()
    {
        const SimulatedLine line(SimulatedLine::Kind::Tcp);
        KvtProcess kvt;
        const QByteArray list = "name,area,address,station,type,interval\n"
                                "level,D,5.2.1,1,u16,50ms\n"
                                "speed,D,5.2.1,2,u16,50ms\n"
                                "recipe,C,7.0.1.4,2,u8,1s\n";
        const QJsonValue summary = lastObject(polled(line, list, "--seconds 2 --json", &kvt))
                                       .value(QStringLiteral("summary"));
        const QJsonArray classes = summary[QStringLiteral("classes")].toArray();
        QCOMPARE(classes.size(), 2);
        QCOMPARE(classes.at(0)[QStringLiteral("interval_ms")].toDouble(), 50.0);
        QCOMPARE(classes.at(0)[QStringLiteral("reads")].toInt(), 2);
        // No more than the intervals of two seconds allow; fewer on a busy machine.
        const int count = classes.at(0)[QStringLiteral("count")].toInt();
        QVERIFY2(count > 4 && count <= 84, qPrintable(QString::number(count)));
        KvtProcess text;
        const QByteArray shown = polled(line, list, "--cycles 2", &text);
        QVERIFY2(shown.contains("\nscans 2, "), shown);
        QVERIFY2(shown.contains("\n50 ms class: 2 requests, read every "), shown);
        QVERIFY2(shown.contains("\n1 s class: 1 request, "), shown);
    }
};

QTEST_GUILESS_MAIN(TestKvtPollWatch)
#include "tst_kvt_poll_watch.moc"
