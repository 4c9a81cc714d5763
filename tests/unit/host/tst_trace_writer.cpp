// The file of a trace.
#include "host/host_time.h"
#include "host/trace_format.h"
#include "host/trace_writer.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <fcntl.h>
#include <mutex>
#include <sys/stat.h>
#include <unistd.h>

using namespace kvt;

namespace
{

constexpr qint64 MEBIBYTE = 1048576;

}

class TestTraceWriter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { notices_.clear(); }

    void recordsBearTheTimeSinceTheStart()
    {
        qint64 now_ns = seconds(100);
        TraceWriter writer([&now_ns] { return now_ns; });
        QString error;
        QVERIFY2(open(&writer, MEBIBYTE, &error), qPrintable(error));
        now_ns += milliseconds(12003) + microseconds(4);
        writer.add("line up");
        writer.close(NEVER);
        const QByteArrayList written = lines(path());
        QCOMPARE(written.size(), 3);
        QVERIFY(written.at(0).startsWith("kvt-trace 1 2"));
        QCOMPARE(written.at(1), QByteArray("12.003004 line up"));
        QCOMPARE(writer.problem(), QString());
    }

    void theNewestRecordsAreKept()
    {
        for (const int limit : {400, 401, 419, 1000}) {
            TraceWriter writer([] { return qint64(0); }, Outlet::WhenFull::Wait);
            QString error;
            QVERIFY2(open(&writer, limit, &error), qPrintable(error));
            for (int i = 0; i < 1000; ++i) {
                writer.add("list " + QByteArray::number(i));
                writer.flush();
            }
            writer.close(NEVER);
            QCOMPARE(writer.problem(), QString());
            const QByteArrayList newest = lines(path());
            QByteArrayList all = lines(TraceFile::olderName(path()));
            QVERIFY(all.join('\n').size() + newest.join('\n').size() <= limit);
            QCOMPARE(all.first(), newest.first());
            QCOMPARE(all.at(1), QByteArray("0.000000 continued"));
            QCOMPARE(newest.at(1), QByteArray("0.000000 continued"));
            // Behind those two lines and without the end of the last, one after the other up to the
            // last.
            all = all.mid(2, all.size() - 3) + newest.mid(2, newest.size() - 3);
            for (int i = 0; i < all.size(); ++i)
                QCOMPARE(all.at(i), "0.000000 list " + QByteArray::number(1000 - all.size() + i));
        }
        // Once for each of the files.
        QCOMPARE(notices_.size(), 4);
        QVERIFY2(notices_.first().contains("--trace-size"), qPrintable(notices_.first()));
    }

    void onlyATraceIsReplaced()
    {
        fill(path(), "kvt-trace 1 of yesterday\n0.1 line up\n");
        fill(TraceFile::olderName(path()), "kvt-trace 1 of yesterday\n0.0 line up\n");
        QString error;
        {
            TraceWriter writer([] { return qint64(0); });
            QVERIFY2(open(&writer, MEBIBYTE, &error), qPrintable(error));
            writer.close(NEVER);
            QCOMPARE(lines(path()).size(), 2);
            QVERIFY(!QFile::exists(TraceFile::olderName(path())));
            TraceWriter second([] { return qint64(0); });
            QVERIFY(!open(&second, MEBIBYTE, &error));
            QVERIFY2(error.contains("another program records to it"), qPrintable(error));
        }
        for (const QString &file : {path(), TraceFile::olderName(path())}) {
            QFile::remove(path());
            fill(file, "kvt-tracks");
            TraceWriter writer([] { return qint64(0); });
            QVERIFY(!open(&writer, MEBIBYTE, &error));
            QVERIFY2(error.contains("no trace"), qPrintable(error));
            QCOMPARE(lines(file), QByteArrayList{"kvt-tracks"});
        }
        QFile::remove(TraceFile::olderName(path()));
    }

    void aFileThatCannotBeMadeIsAnError()
    {
        TraceWriter writer([] { return qint64(0); });
        QString error;
        QVERIFY(
            !writer.open(folder_.filePath(QStringLiteral("missing/trace")), MEBIBYTE, {}, &error));
        QCOMPARE(error, QStringLiteral("No such file or directory"));
    }

    void aFullDiskEndsTheRecordingWithItsReason()
    {
        TraceWriter writer([] { return qint64(0); });
        QString error;
        QVERIFY(writer.open(
            QStringLiteral("/dev/full"), MEBIBYTE, [this](const QString &text) { noticed(text); },
            &error));
        writer.add("line up");
        writer.close(NEVER);
        QCOMPARE(writer.problem(), QStringLiteral("No space left on device"));
        QCOMPARE(notices_, QStringList{"the recording has ended: No space left on device"});
    }

    // The pipe is opened for reading when all has been added.
    void recordsThatFindNoRoomAreCounted()
    {
        const QByteArray name = QFile::encodeName(folder_.filePath(QStringLiteral("fifo")));
        QCOMPARE(mkfifo(name.constData(), 0600), 0);
        TraceWriter writer([] { return qint64(0); });
        QString error;
        QVERIFY2(writer.open(QFile::decodeName(name), MEBIBYTE, {}, &error), qPrintable(error));
        const QByteArray record = "rx " + QByteArray(20000, '0');
        const auto addSome = [&] {
            for (int i = 0; i < 1000; ++i) {
                writer.add(record);
                writer.flush();
            }
        };
        addSome();
        writer.close(0);
        const QString lost = writer.problem().section(QLatin1Char(' '), 0, 0);
        QVERIFY2(lost.toInt() > 100 && lost.toInt() < 1000, qPrintable(writer.problem()));
        const int reader = ::open(name.constData(), O_RDONLY | O_CLOEXEC);
        QVERIFY(reader >= 0);
        QByteArray content;
        QByteArray buffer(65536, '\0');
        const auto readMore = [&] {
            const ssize_t count = read(reader, buffer.data(), static_cast<size_t>(buffer.size()));
            content.append(buffer.constData(), static_cast<int>(qMax<ssize_t>(count, 0)));
        };
        while (content.count('\n') < 1 + 1000 - lost.toInt())
            readMore();
        writer.add("line up");
        writer.flush();
        while (!content.endsWith("line up\n"))
            readMore();
        close(reader);
        QVERIFY(content.endsWith("0.000000 lost " + lost.toLatin1() + "\n0.000000 line up\n"));
        QVERIFY(content.startsWith("kvt-trace 1 "));
    }

    void wordsHaveNoBlanks()
    {
        QCOMPARE(traceHex(QByteArray("\x05\xAB", 2)), QByteArray("05AB"));
        QCOMPARE(traceHex(QByteArray()), QByteArray("-"));
        QCOMPARE(traceText(QStringLiteral("5.2.1")), QByteArray("5.2.1"));
        QCOMPARE(traceText(QString()), QByteArray("-"));
        QCOMPARE(traceText(QStringLiteral("-")), QByteArray("%2D"));
        QCOMPARE(traceText(QStringLiteral("a b\n")), QByteArray("a%20b%0A"));
    }

private:
    QTemporaryDir folder_;
    std::mutex mutex_;
    QStringList notices_; // read when the writer is closed

    QString path() const { return folder_.filePath(QStringLiteral("trace")); }
    bool open(TraceWriter *writer, qint64 limit_bytes, QString *error)
    {
        return writer->open(
            path(), limit_bytes, [this](const QString &text) { noticed(text); }, error);
    }
    void noticed(const QString &text)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        notices_.append(text);
    }
    static QByteArrayList lines(const QString &name)
    {
        QFile file(name);
        return file.open(QIODevice::ReadOnly) ? file.readAll().split('\n') : QByteArrayList();
    }
    static void fill(const QString &name, const QByteArray &content)
    {
        QFile file(name);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(content), qint64(content.size()));
    }
};

QTEST_GUILESS_MAIN(TestTraceWriter)
#include "tst_trace_writer.moc"
