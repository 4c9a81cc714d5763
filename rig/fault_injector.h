// Commits one fault of the line, at requests of one kind, by a fixed plan.
#ifndef KVT_RIG_FAULT_INJECTOR_H
#define KVT_RIG_FAULT_INJECTOR_H

#include "rig/fault_striker.h"

namespace kvt
{

/// True for the requests that a fault is committed at.
using RequestFilter = std::function<bool(const QByteArray &request)>;

/// Is told of each answer that the PLC gives, before anything happens to it.
using AnswerLog = std::function<void(const QByteArray &request, const QByteArray &reply)>;

/// What an injector works with.
struct InjectorSettings {
    FaultOfLine fault;
    RequestFilter filter;
    AnswerLog log;
    EngineSettings engine; ///< of the host, for its times
    int replyLength = 0;   ///< of the kind
    quint64 seed = 1;
};

/// Three phases: the fault now and then; the fault now and then and another one soon after it; the
/// fault at every request of the kind for five seconds. After these the line is sound. One
/// thread.
class FaultInjector final : public LineFault
{
public:
    enum class Phase { Single, Second, Always, Over };

    explicit FaultInjector(const InjectorSettings &settings);

    QByteArray onItsWay(const QByteArray &request, qint64 now_ns) override;
    LineReaction disturb(const QByteArray &request, qint64 now_ns,
                         const PlcReaction &honest) override;
    void lineOpened() override;

    Phase phase() const { return phase_; }

    /// How many faults have been committed, and when the last was.
    int strikes() const { return strikes_; }
    qint64 struckAt_ns() const { return struckAt_ns_; }

    /// A fault of several answers goes on.
    bool goesOn() const { return striker_.goesOn(); }

private:
    void choose(const QByteArray &request, qint64 now_ns);
    void nextPhase(qint64 now_ns);
    bool isDue();
    int wanted() const;

    InjectorSettings settings_;
    Random random_;
    FaultStriker striker_;
    Phase phase_ = Phase::Single;
    const FaultOfLine *chosen_ = nullptr; // for the request on its way
    int strikes_ = 0;
    int inPhase_ = 0;      // strikes
    int second_ = 0;       // requests until the second fault; 0: none is due
    qint64 always_ns_ = 0; // when the last phase began
    qint64 struckAt_ns_ = 0;
};

} // namespace kvt

#endif
