// An exchange engine on the real driver, driven by hand-made times and bytes.
#ifndef KVT_TESTS_SUPPORT_ENGINE_BENCH_H
#define KVT_TESTS_SUPPORT_ENGINE_BENCH_H

#include "host/exchange_engine.h"

#include <QVector>

#include <memory>
#include <vector>

/// Notes what an engine reports.
class EngineLog final : public kvt::ExchangeObserver
{
public:
    struct EndedAttempt {
        kvt::AttemptEnd end;
        int number;
        int resultCode;
        int receivedBytes;
        bool doubtful;
        bool unproven;
        qint64 sentAt_ns;
        qint64 endedAt_ns;
        int station;
    };

    void beforeRequest(qint64) override { ++timesAsked; }
    void requestChosen(const kvt::Request &request) override { chosen.append(request); }
    void attemptEnded(const kvt::Attempt &attempt) override
    {
        ended.append({attempt.end, attempt.number, attempt.resultCode, attempt.receivedBytes,
                      attempt.doubtful, attempt.unproven, attempt.sentAt_ns, attempt.endedAt_ns,
                      attempt.request->station});
    }
    void bytesDropped(kvt::DroppedBytes kind, int station, int count) override
    {
        droppedStation = station;
        if (kind == kvt::DroppedBytes::Stale)
            stale += count;
        else if (kind == kvt::DroppedBytes::Late)
            late += count;
        else
            echo += count;
    }
    void checkpointPassed(qint64 began_ns) override { passed.append(began_ns); }
    void checkpointVoid() override { ++timesVoid; }
    void outOfStep(qint64 provedUntil_ns) override { outOfSteps.append(provedUntil_ns); }
    void lineChanged(bool up, qint64) override { lineStates.append(up); }

    int timesAsked = 0;
    QVector<kvt::Request> chosen;
    QVector<EndedAttempt> ended;
    QVector<bool> lineStates;
    QVector<qint64> passed;
    QVector<qint64> outOfSteps;
    int timesVoid = 0;
    int stale = 0;
    int late = 0;
    int echo = 0;
    int droppedStation = -2;
};

/// A variable of the read list.
struct BenchVariable {
    int area;
    int station;
    const char *address;
};

/// Two words of station 1, the requests that read them in turn, and a reply to either.
inline const QVector<BenchVariable> TWO_WORDS = {{AREA_D, 1, "5.2.1"}, {AREA_D, 1, "5.3.1"}};
inline const QByteArray FIRST_REQUEST("\x05"
                                      "010528\r");
inline const QByteArray SECOND_REQUEST("\x05"
                                       "010538\r");
inline const QByteArray REPLY("\x06"
                              "011234\r");

/// Loads the driver for itself, hands it cyclic variables and puts an engine on it. One character
/// takes 1 ms, a station answers within 50 ms, the interface holds nothing back: the time-out of
/// an eight-byte reply is 58 ms, the silence after a failure as long, a gap in a reply 4 ms. The
/// line has no pace unless the settings give it one, so a request is allowed its 8 ms besides.
/// There are no listening pauses unless the settings ask for them.
class EngineBench
{
public:
    static constexpr qint64 MS = 1000000;

    explicit EngineBench(const QVector<BenchVariable> &variables, int retryLimit = 2)
    {
        library.load(QStringLiteral(KVT_LIBRARY), &error);
        if (!library.isLoaded())
            return;
        info.retryLimit = retryLimit;
        info.purgeByStation = 1;
        info.hostWriteMode = 2;
        library.api().SetComInfo(&info);
        library.api().FlashLocalRegister(nullptr, localWords.data(), nullptr);
        library.api().RegistCallBackFuncIntf([](int, int, int, int) { return 0; },
                                             [](QList<RW_VAR> *, int, int) {});
        QList<HOST_VAR> list;
        for (const BenchVariable &variable : variables) {
            HOST_VAR entry;
            entry.areaType = static_cast<quint8>(variable.area);
            entry.station = static_cast<quint8>(variable.station);
            entry.addressText = QLatin1String(variable.address);
            list.append(entry);
        }
        library.api().ReCreatReadVarList(&list);
        settings.characterTime_ns = MS;
        settings.latency_ns = 0;
        settings.checkpointShare = 0;
    }

    /// Makes the engine of `settings`, which may have been changed.
    void makeEngine()
    {
        engine = std::make_unique<kvt::ExchangeEngine>(library.api(), settings, &log);
    }

    /// Brings the line up at 0 and passes the silence before the first request, which ends at
    /// `now_ns`.
    void bringUp()
    {
        makeEngine();
        engine->lineUp(0);
        now_ns = engine->deadline_ns();
        engine->deadlineReached(now_ns);
    }

    /// Takes the request that is due; empty when there is none.
    QByteArray take()
    {
        QByteArray request;
        engine->takeRequest(&request);
        return request;
    }

    /// Takes the request that is due and has its last byte leave at `now_ns`.
    QByteArray send()
    {
        const QByteArray request = take();
        engine->sent(now_ns);
        return request;
    }

    /// Has bytes arrive `later_ms` after the time that it is.
    void receive(qint64 later_ms, const QByteArray &bytes)
    {
        now_ns += later_ms * MS;
        engine->received(now_ns, bytes.constData(), bytes.size());
    }

    /// Sends the request that is due and has bytes arrive `later_ms` after it.
    QByteArray exchange(qint64 later_ms, const QByteArray &bytes)
    {
        const QByteArray request = send();
        receive(later_ms, bytes);
        return request;
    }

    /// Goes on to the engine's deadline.
    void passDeadline()
    {
        now_ns = engine->deadline_ns();
        engine->deadlineReached(now_ns);
    }

    /// Milliseconds until the engine's deadline.
    qint64 left_ms() const { return (engine->deadline_ns() - now_ns) / MS; }

    /// The cached value of a word, as the driver's two bytes.
    QByteArray word(int station, const char *address)
    {
        QByteArray bytes;
        library.api().GetRegisterData(QString(), AREA_D, QLatin1String(address), station, bytes, 1);
        return bytes;
    }

    QString error;
    EngineLog log;
    ComInfo info = ComInfo();
    std::vector<quint16> localWords = std::vector<quint16>(50001);
    kvt::DriverLibrary library;
    kvt::EngineSettings settings;
    std::unique_ptr<kvt::ExchangeEngine> engine;
    qint64 now_ns = 0;
};

#endif
