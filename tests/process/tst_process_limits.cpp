// kvt where descriptors or the disk run out, from the start and in the middle of a run.
#include "tests/process/torture.h"

#include <QtTest>

#include <sys/resource.h>

namespace
{

/// Sets the soft limit of a running process. Returns the one before.
rlim_t limit(const KvtProcess &process, __rlimit_resource resource, rlim_t value)
{
    rlimit before = {};
    prlimit(static_cast<pid_t>(process.id()), resource, nullptr, &before);
    const rlimit after = {value, before.rlim_max};
    prlimit(static_cast<pid_t>(process.id()), resource, &after, nullptr);
    return before.rlim_cur;
}

/// The number of the descriptor by which a process has a terminal open; -1 if it has none.
int terminalOf(const KvtProcess &process)
{
    const QDir folder(QStringLiteral("/proc/%1/fd").arg(process.id()));
    for (const QString &number :
         folder.entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System))
        if (QFile::symLinkTarget(folder.filePath(number)).startsWith(QLatin1String("/dev/pts/")))
            return number.toInt();
    return -1;
}

/// What is wrong with the messages of a command; empty when each is one of kvt's.
QString faultOfMessages(const QByteArray &errors)
{
    for (const QByteArray &message : errors.trimmed().split('\n'))
        if (!message.isEmpty() && !message.startsWith("kvt: "))
            return QString::fromUtf8(message);
    return QString();
}

} // namespace

class TestProcessLimits : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void withTooFewDescriptorsItSaysSo_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<bool>("takesLine");
        QTest::newRow("read") << QStringLiteral("read D 5.2.1 --timeout 10000") << true;
        QTest::newRow("poll") << QStringLiteral("poll --cycles 3 --json --timeout 10000") << true;
        QTest::newRow("poll with a trace")
            << QStringLiteral("poll --cycles 3 --timeout 10000 --trace trace") << true;
        QTest::newRow("sim") << QStringLiteral("sim --tcp 0 --seconds 1") << false;
        QTest::newRow("decode") << QStringLiteral("decode 02303105") << false;
    }

    // Each of the limits up to the one with which all goes well lets another step fail. How many a
    // program inherits, and so with how many it has loaded its libraries, is its surroundings'
    // affair.
    void withTooFewDescriptorsItSaysSo()
    {
        QFETCH(QString, command);
        QFETCH(bool, takesLine);
        const SimulatedLine line(SimulatedLine::Kind::Pty);
        QTemporaryDir folder;
        QStringList words = takesLine ? line.arguments(command) : command.split(QLatin1Char(' '));
        if (words.first() == QLatin1String("poll"))
            words << QStringLiteral("--tags") << line.tagFile();
        int status = -1;
        for (int descriptors = 4; status != 0; ++descriptors) {
            KvtProcess kvt;
            kvt.runIn(folder.path());
            kvt.startBehind(QStringLiteral("ulimit -n %1").arg(descriptors), words);
            status = kvt.finish();
            const QByteArray errors = kvt.errors();
            QVERIFY2(status >= 0 && descriptors < 64, errors.constData());
            if (errors.contains("error while loading shared libraries"))
                continue;
            QCOMPARE(faultOfMessages(errors), QString());
            QVERIFY2(status == 0 || errors.contains("Too many open files"), errors.constData());
        }
    }

    // The line breaks every two seconds or so, which leaves the time to take the descriptor away.
    void aLineThatFindsNoDescriptorIsOpenedLater()
    {
        SimulatedLine line(
            SimulatedLine::Kind::Pty,
            constantValues({QStringLiteral("--turnaround"), QStringLiteral("10"),
                            QStringLiteral("--faults"), QStringLiteral("break=every200:1ms")}));
        ValueJudge judge(line);
        QVERIFY(judge.isReady());
        KvtProcess kvt;
        kvt.start(pollArguments(line, "--json --interval 20 --timeout 300"));
        QVERIFY(judge.seesGoodLines(&kvt, 1));
        const int terminal = terminalOf(kvt);
        QVERIFY(terminal > 2);
        const rlim_t before = limit(kvt, RLIMIT_NOFILE, static_cast<rlim_t>(terminal));
        QVERIFY(judge.seesLine(&kvt, false));
        QTest::qWait(700); // so that it has been refused more than once
        limit(kvt, RLIMIT_NOFILE, before);
        QVERIFY(judge.seesLine(&kvt, true));
        QVERIFY(judge.seesGoodLines(&kvt, 3));
        kvt.interrupt();
        QVERIFY(kvt.finish() >= 0);
        QCOMPARE(judge.wrong(), 0);
        QCOMPARE(faultOfMessages(kvt.errors()), QString());
    }

    void aFileThatMayNotGrowEndsThePoll()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty);
        const QString file = line.filePath(QStringLiteral("values"));
        KvtProcess kvt;
        kvt.sendOutputTo(file);
        kvt.start(pollArguments(line, "--json --interval 20"));
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo(file).size() > 4096, 30000);
        const qint64 size = QFileInfo(file).size() + 65536;
        limit(kvt, RLIMIT_FSIZE, static_cast<rlim_t>(size));
        QCOMPARE(kvt.finish(), 1);
        QCOMPARE(QFileInfo(file).size(), size);
        const QByteArray errors = kvt.errors();
        QVERIFY2(errors.endsWith("kvt: standard output: File too large\n"), errors.constData());
        QCOMPARE(faultOfMessages(errors), QString());
    }

    void aTraceThatMayNotGrowEndsAndThePollGoesOn()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty, constantValues());
        ValueJudge judge(line);
        QVERIFY(judge.isReady());
        const QString trace = line.filePath(QStringLiteral("trace"));
        KvtProcess kvt;
        kvt.start(pollArguments(line, "--json --interval 20 --timeout 10000") +
                  QStringList{QStringLiteral("--trace"), trace});
        QVERIFY(judge.seesGoodLines(&kvt, 3));
        limit(kvt, RLIMIT_FSIZE, static_cast<rlim_t>(QFileInfo(trace).size()) + 8192);
        QByteArray errors;
        while (!errors.contains(": the recording has ended: File too large\n")) {
            QVERIFY(judge.seesGoodLines(&kvt, 1));
            errors += kvt.errors();
        }
        QVERIFY(judge.seesGoodLines(&kvt, 5));
        kvt.interrupt();
        QCOMPARE(kvt.finish(), 1);
        errors = kvt.errors();
        QVERIFY2(errors.endsWith(" is not complete: File too large\n"), errors.constData());
        QCOMPARE(judge.wrong(), 0);
        KvtProcess decode;
        QCOMPARE(decode.run({QStringLiteral("decode"), trace}), 0);
        KvtProcess replay;
        QCOMPARE(replay.run({QStringLiteral("replay"), trace}), 0);
    }
};

QTEST_GUILESS_MAIN(TestProcessLimits)
#include "tst_process_limits.moc"
