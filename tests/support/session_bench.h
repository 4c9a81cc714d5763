// A host session on the real driver, with a line that the test plays by hand.
#ifndef KVT_TESTS_SUPPORT_SESSION_BENCH_H
#define KVT_TESTS_SUPPORT_SESSION_BENCH_H

#include "host/host_session.h"
#include "tests/support/event_recorder.h"

#include <memory>

/// Returns a tag named by its place: "D1/5.2.1" is word 5.2.1 of station 1.
inline kvt::Tag benchTag(const char *name)
{
    const QString text = QLatin1String(name);
    const int slash = text.indexOf(QLatin1Char('/'));
    kvt::Tag tag;
    tag.name = text;
    tag.area = text.startsWith(QLatin1Char('X'))   ? kvt::Area::X
               : text.startsWith(QLatin1Char('D')) ? kvt::Area::D
                                                   : kvt::Area::C;
    tag.station = text.midRef(1, slash - 1).toInt();
    tag.address = text.mid(slash + 1);
    tag.form = tag.area == kvt::Area::D ? kvt::ValueType::U16 : kvt::ValueType::U8;
    return tag;
}

/// Loads the driver for itself. One character takes 1 ms, stations answer within 50 ms. Requests
/// fail at their first attempt, and a station is off after two failures, for a second at first.
class SessionBench
{
public:
    explicit SessionBench(std::initializer_list<const char *> names)
    {
        for (const char *name : names)
            tags.append(benchTag(name));
        QString error;
        if (!library.load(QStringLiteral(KVT_LIBRARY), &error))
            qFatal("%s", qPrintable(error));
        settings.engine.characterTime_ns = kvt::milliseconds(1);
        settings.engine.latency_ns = 0;
        settings.engine.checkpointShare = 0;
        settings.retryLimit = 0;
        settings.supervisor.failuresToSwitchOff = 2;
    }

    /// Makes the session of `settings`, which may have been changed, and brings its line up.
    void start()
    {
        session = std::make_unique<kvt::HostSession>(library.api(), settings, tags, &events);
        session->engine().lineUp(now_ns);
        passDeadline();
    }

    /// Sends the request that is due; empty when there is none.
    QByteArray send()
    {
        QByteArray request;
        if (session->engine().takeRequest(&request))
            session->engine().sent(now_ns);
        return request;
    }

    /// Has bytes arrive after 10 ms.
    void receive(const QByteArray &bytes)
    {
        now_ns += kvt::milliseconds(10);
        session->engine().received(now_ns, bytes.constData(), bytes.size());
    }

    void passDeadline()
    {
        now_ns = qMax(now_ns, session->engine().deadline_ns());
        session->engine().deadlineReached(now_ns);
    }

    /// Sends the request that is due and answers it. A read is answered with `digits`.
    QByteArray exchange(const QByteArray &digits = "1234")
    {
        const QByteArray request = send();
        const bool isWrite = request.size() > 8;
        receive('\x06' + request.mid(1, 2) + (isWrite ? QByteArray("00") : digits) + '\r');
        return request;
    }

    /// Sends the request that is due and lets it fail; goes on until the next one is due.
    QByteArray failure()
    {
        const QByteArray request = send();
        passDeadline();
        passDeadline();
        return request;
    }

    kvt::TagValue value(int tag) const { return session->values(now_ns).at(tag); }

    QVector<kvt::Tag> tags;
    kvt::SessionSettings settings;
    EventRecorder events;
    kvt::DriverLibrary library;
    std::unique_ptr<kvt::HostSession> session;
    qint64 now_ns = 0;
};

#endif
