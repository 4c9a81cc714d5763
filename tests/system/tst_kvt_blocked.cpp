// kvt whose output nobody takes: it polls on, and ends when it is told to.
#include "tests/support/poll_run.h"

#include <QtTest>

#include <array>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

/// A pipe with both ends open that nobody reads, and no room in it.
class FullPipe
{
public:
    FullPipe()
    {
        if (pipe(ends_) != 0)
            return;
        const int flags = fcntl(ends_[1], F_GETFL);
        fcntl(ends_[1], F_SETFL, flags | O_NONBLOCK);
        const std::array<char, 4096> filling = {};
        while (write(ends_[1], filling.data(), filling.size()) > 0)
            continue;
        fcntl(ends_[1], F_SETFL, flags);
    }
    ~FullPipe()
    {
        close(ends_[0]);
        close(ends_[1]);
    }
    FullPipe(const FullPipe &) = delete;
    FullPipe &operator=(const FullPipe &) = delete;

    /// The name under which another process opens the end that takes bytes.
    QString name() const { return QStringLiteral("/proc/%1/fd/%2").arg(getpid()).arg(ends_[1]); }

private:
    int ends_[2] = {-1, -1};
};

QString makeFifo(const SimulatedLine &line)
{
    const QString name = line.filePath(QStringLiteral("fifo"));
    return mkfifo(QFile::encodeName(name).constData(), 0600) == 0 ? name : QString();
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class TestKvtBlocked : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aSignalEndsWhatNobodyReads_data()
    {
        QTest::addColumn<int>("signal");
        QTest::addColumn<QString>("command");
        QTest::addColumn<bool>("stuckErrors");
        const QString polling = QStringLiteral("poll --json --interval 20 --tags ");
        QTest::newRow("poll, INT") << SIGINT << polling << false;
        QTest::newRow("poll, TERM") << SIGTERM << polling << true;
        QTest::newRow("poll, HUP") << SIGHUP << polling << true;
        QTest::newRow("tune, TERM")
            << SIGTERM << QStringLiteral("tune --exchanges 100000 --tags ") << true;
    }

    // The simulation's log shows that it polls on, long after the pipe was full.
    void aSignalEndsWhatNobodyReads()
    {
        QFETCH(int, signal);
        QFETCH(QString, command);
        QFETCH(bool, stuckErrors);
        SimulatedLine line(SimulatedLine::Kind::Pty, {QStringLiteral("--log")});
        QVERIFY(line.isReady());
        const FullPipe pipe;
        KvtProcess kvt;
        kvt.sendOutputTo(pipe.name());
        if (stuckErrors)
            kvt.sendErrorsTo(pipe.name());
        kvt.start(line.arguments(command + line.tagFile()));
        for (int i = 0; i < 2000; ++i)
            QVERIFY(!line.plc().readLine().isNull());
        kvt.signal(signal);
        QCOMPARE(kvt.finish(), 1);
        if (!stuckErrors) {
            const QByteArray errors = kvt.errors();
            QVERIFY2(errors.endsWith("kvt: standard output: nobody reads the last texts\n"),
                     errors.constData());
        }
    }

    void theSimulationEndsThoughNobodyReadsItsLog()
    {
        const FullPipe pipe;
        QTemporaryDir folder;
        const QString link = folder.filePath(QStringLiteral("plc"));
        KvtProcess plc;
        plc.sendOutputTo(pipe.name());
        plc.start({QStringLiteral("sim"), QStringLiteral("--pty"), link, QStringLiteral("--log")});
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(link), 30000);
        KvtProcess read;
        QCOMPARE(read.run({QStringLiteral("read"), QStringLiteral("D"), QStringLiteral("5.2.1"),
                           QStringLiteral("--serial"), link}),
                 0);
        plc.signal(SIGTERM);
        QCOMPARE(plc.finish(), 1);
        QVERIFY(!QFileInfo::exists(link) && !QFileInfo(link).isSymLink());
    }

    void hangingUpEndsWithSummaryAndCleansUp()
    {
        SimulatedLine line(SimulatedLine::Kind::Pty);
        QVERIFY(line.isReady());
        const QString trace = line.filePath(QStringLiteral("trace"));
        KvtProcess kvt;
        kvt.start(pollArguments(line, "--json --interval 20") +
                  QStringList{QStringLiteral("--trace"), trace});
        while (kvt.readLine().count("\"good\"") < 5)
            QVERIFY(kvt.isRunning());
        kvt.signal(SIGHUP);
        QCOMPARE(kvt.finish(), 0);
        QVERIFY(kvt.output().trimmed().split('\n').last().contains("\"summary\""));
        KvtProcess replay;
        QCOMPARE(replay.run({QStringLiteral("replay"), trace}), 0);
        const QString link = line.filePath(QStringLiteral("plc"));
        QVERIFY(QFileInfo(link).isSymLink());
        line.plc().signal(SIGHUP);
        QCOMPARE(line.plc().finish(), 0);
        QVERIFY(!QFileInfo(link).isSymLink());
        QVERIFY(line.plc().output().startsWith("exchanges "));
    }

    void aTraceThatNobodyTakesStopsNothing()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty);
        const QString fifo = makeFifo(line);
        QVERIFY(!fifo.isEmpty());
        KvtProcess kvt;
        kvt.start(pollArguments(line, "--json --interval 20") +
                  QStringList{QStringLiteral("--trace"), fifo});
        while (kvt.readLine().count("\"good\"") < 5)
            QVERIFY(kvt.isRunning());
        kvt.signal(SIGTERM);
        QCOMPARE(kvt.finish(), 1);
        const QByteArray errors = kvt.errors();
        QVERIFY2(errors.endsWith(" is not complete: nobody takes its last records\n"),
                 errors.constData());
        QVERIFY(kvt.output().trimmed().split('\n').last().contains("\"summary\""));
    }

    // Without any signal, too: the end waits for a while and no longer.
    void aTraceThatNobodyTakesIsTold()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty);
        const QString fifo = makeFifo(line);
        QVERIFY(!fifo.isEmpty());
        KvtProcess kvt;
        QCOMPARE(kvt.run(line.arguments(QStringLiteral("read D 5.2.1 --trace ") + fifo)), 1);
        QVERIFY(kvt.output().startsWith("D 5.2.1 at station 1: "));
        const QByteArray errors = kvt.errors();
        QVERIFY2(errors.contains(" --trace: " + fifo.toUtf8() + " is not complete: "),
                 errors.constData());
    }

    void onlyATraceIsReplaced()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty);
        QFile file(line.filePath(QStringLiteral("notes.txt")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("the only copy\n");
        file.close();
        const QString tracing = QStringLiteral("read D 5.2.1 --trace ");
        KvtProcess kvt;
        QCOMPARE(kvt.run(line.arguments(tracing + file.fileName())), 2);
        QCOMPARE(kvt.errors(), "kvt: --trace: " + file.fileName().toUtf8() +
                                   ": it is no trace and is left as it is\n");
        QCOMPARE(contentOf(file.fileName()), QByteArray("the only copy\n"));
        const QString trace = line.filePath(QStringLiteral("trace"));
        for (int i = 0; i < 2; ++i) {
            KvtProcess again;
            QCOMPARE(again.run(line.arguments(tracing + trace)), 0);
            QCOMPARE(contentOf(trace).count("kvt-trace "), 1);
        }
    }

    void theNewestOfATraceIsKept()
    {
        const SimulatedLine line(SimulatedLine::Kind::Pty);
        const QString trace = line.filePath(QStringLiteral("trace"));
        KvtProcess kvt;
        QCOMPARE(kvt.run(pollArguments(line, "--cycles 2000 --trace-size 1") +
                         QStringList{QStringLiteral("--trace"), trace}),
                 0);
        const QByteArray errors = kvt.errors();
        QVERIFY2(errors.contains(" older than its newest 1 MiB goes from now on"),
                 errors.constData());
        QCOMPARE(errors.count('\n'), 1);
        const qint64 size =
            QFileInfo(trace).size() + QFileInfo(trace + QStringLiteral(".1")).size();
        QVERIFY2(size > 524288 && size <= 1048576, qPrintable(QString::number(size)));
        for (const QString &name : {trace, trace + QStringLiteral(".1")}) {
            KvtProcess decode;
            QCOMPARE(decode.run({QStringLiteral("decode"), name}), 0);
            QVERIFY(decode.output().contains("the recording goes on here"));
            KvtProcess replay;
            QCOMPARE(replay.run({QStringLiteral("replay"), name}), 2);
            QVERIFY(replay.errors().contains("begins in the middle of a run"));
        }
    }

    void aFullDiskEndsTheTraceWithItsReason_data()
    {
        QTest::addColumn<QString>("limit");
        QTest::addColumn<QByteArray>("reason");
        QTest::newRow("from the start")
            << QStringLiteral("unlimited") << QByteArray("No space left on device");
        QTest::newRow("later") << QStringLiteral("16") << QByteArray("File too large");
    }

    void aFullDiskEndsTheTraceWithItsReason()
    {
        QFETCH(QString, limit);
        QFETCH(QByteArray, reason);
        const SimulatedLine line(SimulatedLine::Kind::Pty);
        const QString trace = limit == QStringLiteral("unlimited")
                                  ? QStringLiteral("/dev/full")
                                  : line.filePath(QStringLiteral("trace"));
        QProcess shell;
        shell.start(QStringLiteral("bash"),
                    QStringList{QStringLiteral("-c"),
                                QStringLiteral("ulimit -f %1; exec \"$@\"").arg(limit),
                                QStringLiteral("bash"), QStringLiteral(KVT_PROGRAM)} +
                        pollArguments(line, "--cycles 200 --json") +
                        QStringList{QStringLiteral("--trace"), trace});
        QVERIFY(shell.waitForFinished());
        QCOMPARE(shell.exitCode(), 1);
        const QByteArray errors = shell.readAllStandardError();
        const QByteArray begin = " --trace: " + trace.toUtf8();
        QVERIFY2(errors.contains(begin + ": the recording has ended: " + reason + '\n'),
                 errors.constData());
        QVERIFY2(errors.endsWith(begin + " is not complete: " + reason + '\n'), errors.constData());
        QVERIFY(shell.readAllStandardOutput().trimmed().split('\n').last().contains("\"summary\""));
    }
};

QTEST_GUILESS_MAIN(TestKvtBlocked)
#include "tst_kvt_blocked.moc"
