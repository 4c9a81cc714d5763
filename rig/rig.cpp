#include "rig/rig.h"

#include "simulator/line_speed.h"

namespace kvt
{

std::unique_ptr<Rig> Rig::make(const RigSettings &settings, HostEvents *events, QString *error)
{
    std::unique_ptr<Rig> rig(new Rig);
    if (!rig->library_.load(settings.driverPath, error))
        return nullptr;
    const QStringList obstacles = HostSession::obstacles(settings.tags);
    if (!obstacles.isEmpty()) {
        *error = obstacles.join(QStringLiteral("; "));
        return nullptr;
    }
    rig->characterTime_ns_ = settings.baud > 0 ? byteTime_ns(settings.baud, 10) : 0;

    SessionSettings session = settings.session;
    session.engine.characterTime_ns = rig->characterTime_ns_;
    session.engine.paced = settings.baud > 0;
    session.engine.latency_ns = settings.latency_ns;
    rig->session_ =
        std::make_unique<HostSession>(rig->library_.api(), session, settings.tags, events);

    PlcConfig plc = settings.plc;
    plc.byteTime_ns = rig->characterTime_ns_;
    rig->plc_ = std::make_unique<SimulatedPlc>(settings.tags, plc, settings.seed);
    rig->line_ = std::make_unique<VirtualLine>(&rig->session_->engine(), rig->plc_.get(),
                                               rig->characterTime_ns_);
    return rig;
}

} // namespace kvt
