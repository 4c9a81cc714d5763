// Commits faults of every kind now and then, for as long as it is on the line.
#ifndef KVT_RIG_STORM_H
#define KVT_RIG_STORM_H

#include "rig/fault_striker.h"

namespace kvt
{

/// What a storm reports to.
struct StormLog {
    std::function<void(const QByteArray &request, const QByteArray &reply)> answered;
    std::function<void(qint64 now_ns)> struck;
};

/// Faults at random requests. Left out are those that nothing tells from a good reply, and floods
/// that take minutes but for the very first, which needs most of the rig's own memory, and one in a
/// while. One thread.
class Storm final : public LineFault
{
public:
    /// One request in `rarity` is struck.
    Storm(const EngineSettings &engine, quint32 rarity, const StormLog &log, quint64 seed);

    QByteArray onItsWay(const QByteArray &request, qint64 now_ns) override;
    LineReaction disturb(const QByteArray &request, qint64 now_ns,
                         const PlcReaction &honest) override;
    void lineOpened() override { striker_.lineOpened(); }

    qint64 faults() const { return faults_; }

private:
    void choose();

    quint32 rarity_;
    StormLog log_;
    Random random_;
    FaultStriker striker_;
    const FaultOfLine *chosen_ = nullptr;
    qint64 faults_ = 0;
};

} // namespace kvt

#endif
