// The file of a trace.
#include "host/host_time.h"
#include "host/trace_format.h"
#include "host/trace_writer.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using namespace kvt;

class TestTraceWriter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void recordsBearTheTimeSinceTheStart()
    {
        qint64 now_ns = seconds(100);
        TraceWriter writer([&now_ns] { return now_ns; });
        QString error;
        QVERIFY(writer.open(path(), &error));
        now_ns += milliseconds(12003) + microseconds(4);
        writer.add("line up");
        writer.flush();
        const QByteArrayList written = lines();
        QCOMPARE(written.size(), 3);
        QVERIFY(written.at(0).startsWith("kvt-trace 1 2"));
        QCOMPARE(written.at(1), QByteArray("12.003004 line up"));
        QVERIFY(writer.isRecording());
        QVERIFY(writer.endReason().isEmpty());
    }

    void theFileIsNeverLongerThanItsLimit()
    {
        for (const qint64 limit : {200, 201, 209, 210, 1000}) {
            TraceWriter writer([] { return qint64(0); }, limit);
            QString error;
            QVERIFY(writer.open(path(), &error));
            for (int i = 0; i < 1000; ++i)
                writer.add("rx 00");
            writer.flush();
            const qint64 size = QFile(path()).size();
            QVERIFY2(size <= limit, qPrintable(QString::number(size)));
            QVERIFY2(size > limit - 100, qPrintable(QString::number(size)));
        }
    }

    void theFullFileSaysSoInItsLastRecord()
    {
        TraceWriter writer([] { return qint64(0); }, 300);
        QString error;
        QVERIFY(writer.open(path(), &error));
        for (int i = 0; i < 100; ++i)
            writer.add("rx 00");
        QVERIFY(!writer.isRecording());
        QVERIFY(writer.endReason().contains(QStringLiteral("300 bytes")));
        const QByteArrayList written = lines();
        QVERIFY(written.size() > 2);
        QCOMPARE(written.at(written.size() - 2), QByteArray("0.000000 full"));
        QVERIFY(written.last().isEmpty());
    }

    void aFileThatCannotBeMadeIsAnError()
    {
        TraceWriter writer([] { return qint64(0); });
        QString error;
        QVERIFY(!writer.open(folder_.filePath(QStringLiteral("missing/trace")), &error));
        QVERIFY(!error.isEmpty());
        writer.add("rx 00");
        QVERIFY(!writer.isRecording());
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
    QString path() const { return folder_.filePath(QStringLiteral("trace")); }
    QByteArrayList lines() const
    {
        QFile file(path());
        return file.open(QIODevice::ReadOnly) ? file.readAll().split('\n') : QByteArrayList();
    }
};

QTEST_GUILESS_MAIN(TestTraceWriter)
#include "tst_trace_writer.moc"
