#include "rig/rig.h"

#include "simulator/line_speed.h"

namespace kvt
{

std::unique_ptr<Rig> Rig::make(const RigSettings &settings, HostEvents *events, QString *error)
{
    std::unique_ptr<Rig> rig(new Rig);
    rig->settings_ = settings;
    rig->events_ = events;
    rig->characterTime_ns_ = settings.baud > 0 ? byteTime_ns(settings.baud, BITS_PER_CHARACTER) : 0;
    if (!rig->startHost(error))
        return nullptr;
    PlcConfig plc = settings.plc;
    plc.byteTime_ns = rig->characterTime_ns_;
    rig->plc_ = std::make_unique<SimulatedPlc>(settings.tags, plc, settings.seed);
    rig->line_ = std::make_unique<VirtualLine>(&rig->session_->engine(), rig->plc_.get(),
                                               rig->characterTime_ns_, settings.start_ns);
    return rig;
}

bool Rig::startHost(QString *error)
{
    if (!library_.load(settings_.driverPath, error))
        return false;
    const QStringList obstacles = HostSession::obstacles(settings_.tags);
    if (!obstacles.isEmpty()) {
        *error = obstacles.join(QStringLiteral("; "));
        return false;
    }
    SessionSettings session = settings_.session;
    session.engine.characterTime_ns = characterTime_ns_;
    session.engine.paced = settings_.baud > 0;
    session.engine.latency_ns = settings_.latency_ns;
    session_ = std::make_unique<HostSession>(library_.api(), session, settings_.tags, events_);
    return true;
}

bool Rig::restartHost(QString *error)
{
    session_->stop();
    session_.reset();
    library_.unload();
    if (!startHost(error))
        return false;
    line_->handOver(&session_->engine());
    return true;
}

} // namespace kvt
