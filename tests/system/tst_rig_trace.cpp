// Runs with every kind of fault, recorded on a virtual clock and put to the driver again.
#include "host/trace_recorder.h"
#include "host/trace_replay.h"
#include "rig/plant.h"
#include "rig/rig.h"
#include "simulator/fault_text.h"

#include <QTemporaryDir>
#include <QtTest>

using namespace kvt;

namespace
{

constexpr const char *FAULTS = "noreply=2%,late=1%:80ms,truncate=1%,extra=1%,badend=1%,flip=1%,"
                               "foreign=1%,duplicate=1%,echo=1%,refuse=1%,silence=0.1%:3s,"
                               "break=0.05%:500ms";

// Requests writes and one-time reads between the cyclic ones.
class Operator final : public HostEvents
{
public:
    void tagRead(int, const Reading &) override
    {
        if (++readings_ % 7 == 0)
            session->write(readings_ % session->tags().size(),
                           QByteArray(1, static_cast<char>(readings_)) + QByteArray(1, '\x21'));
        if (readings_ % 11 == 0)
            session->readOnce(readings_ % session->tags().size());
    }

    HostSession *session = nullptr;

private:
    int readings_ = 0;
};

/// Records a run at 38,400 baud. Returns the number of its exchanges.
quint64 record(const QString &path, quint64 seed, qint64 duration_ns)
{
    constexpr qint64 CHARACTER_ns = 260417;
    DriverLibrary library;
    QString error;
    if (!library.load(QStringLiteral(KVT_LIBRARY), &error))
        return 0;
    VirtualLine *line = nullptr;
    TraceRecorder recorder([&line] { return line == nullptr ? 0 : line->now_ns(); },
                           Outlet::WhenFull::Wait);
    if (!recorder.open(path, &error))
        return 0;
    const QVector<Tag> tags = makePlant({4, 5, 5, 2});
    SessionSettings settings;
    settings.engine.characterTime_ns = CHARACTER_ns;
    settings.engine.paced = true;
    settings.engine.tap = &recorder;
    Operator user;
    HostSession session(recorder.attach(library.api()), settings, tags, &user);
    user.session = &session;
    PlcConfig config;
    config.byteTime_ns = CHARACTER_ns;
    config.turnaround_ns = milliseconds(2);
    config.faults = parseFaults(QLatin1String(FAULTS)).rules;
    SimulatedPlc plc(tags, config, seed);
    VirtualLine virtualLine(&session.engine(), &plc, CHARACTER_ns);
    line = &virtualLine;
    virtualLine.runUntil(duration_ns);
    session.stop();
    recorder.close(NEVER);
    line = nullptr;
    return session.statistics().total.exchanges;
}

ReplayResult replay(const QString &path)
{
    ReplayResult result;
    DriverLibrary library;
    TraceReader reader;
    if (!library.load(QStringLiteral(KVT_LIBRARY), &result.error) ||
        !reader.open(path, &result.error))
        return result;
    return replayTrace(&reader, library.api());
}

QByteArrayList linesOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll().split('\n') : QByteArrayList();
}

void writeLines(const QString &path, const QByteArrayList &lines)
{
    QFile file(path);
    if (file.open(QIODevice::WriteOnly))
        file.write(lines.join('\n'));
}

} // namespace

class TestRigTrace : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aRunWithFaultsReplaysWithoutDifference_data()
    {
        QTest::addColumn<quint64>("seed");
        for (const quint64 seed : {1U, 2U, 3U})
            QTest::newRow(qPrintable(QString::number(seed))) << seed;
    }

    void aRunWithFaultsReplaysWithoutDifference()
    {
        QFETCH(quint64, seed);
        const quint64 exchanges = record(path(), seed, seconds(60));
        QVERIFY(exchanges > 500);
        const ReplayResult result = replay(path());
        QVERIFY2(result.difference.isEmpty(), qPrintable(result.difference));
        QVERIFY2(result.error.isEmpty(), qPrintable(result.error));
        QVERIFY(!result.isCut);
        // The last request may have been under way at the end.
        QVERIFY(quint64(result.exchanges) - exchanges <= 1);
        QVERIFY(result.calls > 4 * result.exchanges);
    }

    void everyKindOfRecordIsWritten()
    {
        QVERIFY(record(path(), 4, seconds(60)) > 0);
        QMap<QByteArray, int> counts;
        for (const QByteArray &line : linesOf(path()))
            ++counts[line.split(' ').value(1)];
        for (const char *name :
             {trace::INFO, trace::LOCAL, trace::VARIABLE, trace::LIST, trace::STATION, trace::WRITE,
              trace::ONCE, trace::ASK, trace::SENT, trace::RECEIVED, trace::DROPPED, trace::JUDGED,
              trace::VALUE, trace::ENDED, trace::LINE})
            QVERIFY2(counts.value(name) > 0, name);
    }

    void oneChangedByteNamesItsExchange_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<int>("word"); // in which a character is changed, counted behind the name
        QTest::newRow("the frame that the driver asked to send") << QByteArray(trace::ASK) << 0;
        QTest::newRow("the frame that was sent") << QByteArray(trace::SENT) << 0;
        QTest::newRow("the reply") << QByteArray(trace::JUDGED) << 0;
        QTest::newRow("the result") << QByteArray(trace::JUDGED) << 1;
        QTest::newRow("the value") << QByteArray(trace::VALUE) << 5;
    }

    void oneChangedByteNamesItsExchange()
    {
        QFETCH(QByteArray, name);
        QFETCH(int, word);
        QVERIFY(record(path(), 5, seconds(5)) > 0);
        const QByteArrayList lines = linesOf(path());
        int changed = 0;
        for (int i = 0; i < lines.size(); i += 1 + i % 17) {
            QByteArrayList words = lines.at(i).split(' ');
            if (words.value(1) != name || words.value(2 + word) == trace::NO_BYTES)
                continue;
            QByteArray &text = words[2 + word];
            const int at = i % text.size();
            text[at] = text.at(at) == '1' ? '2' : '1';
            QByteArrayList others = lines;
            others[i] = words.join(' ');
            writeLines(path(), others);
            const ReplayResult result = replay(path());
            const QString place = QStringLiteral("(line %1): ").arg(i + 1);
            QVERIFY2(result.difference.startsWith(QStringLiteral("exchange ")) &&
                         result.difference.contains(place),
                     qPrintable(place + result.difference + result.error));
            ++changed;
        }
        QVERIFY(changed > 5);
    }

    void aMissingCallNamesAnExchange()
    {
        QVERIFY(record(path(), 6, seconds(5)) > 0);
        QByteArrayList lines = linesOf(path());
        for (int i = 0; i < lines.size(); ++i) {
            if (lines.at(i).split(' ').value(1) != trace::WRITE)
                continue;
            lines.removeAt(i);
            break;
        }
        writeLines(path(), lines);
        QVERIFY(replay(path()).difference.startsWith(QStringLiteral("exchange ")));
    }

private:
    QTemporaryDir folder_;
    QString path() const { return folder_.filePath(QStringLiteral("trace")); }
};

QTEST_GUILESS_MAIN(TestRigTrace)
#include "tst_rig_trace.moc"
