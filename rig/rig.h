// One run of the rig: driver, host session, simulated PLC and the virtual line between them.
#ifndef KVT_RIG_RIG_H
#define KVT_RIG_RIG_H

#include "host/host_session.h"
#include "rig/virtual_line.h"

#include <memory>

namespace kvt
{

constexpr int BITS_PER_CHARACTER = 10; // of every line here

/// What a run is made of.
struct RigSettings {
    QString driverPath; ///< of libKVT.so.1
    QVector<Tag> tags;
    int baud = 38400;      ///< 0: a line without a pace, such as TCP
    qint64 latency_ns = 0; ///< what the host allows an interface to hold bytes back
    SessionSettings session;
    PlcConfig plc;
    quint64 seed = 1;
    qint64 start_ns = 0; ///< what the clock says at first
};

/// Loads the driver for itself alone; there can be one rig at a time. One thread.
class Rig
{
public:
    /// Puts the parts together; character times in `settings` follow from `baud`. Returns null and
    /// sets `*error` when the driver cannot be loaded or the tags cannot be polled together.
    /// `events` is not null and outlives the rig.
    static std::unique_ptr<Rig> make(const RigSettings &settings, HostEvents *events,
                                     QString *error);

    /// Ends the host, unloads its driver, and starts both anew on the line as it is. False, with
    /// `*error`, when the driver cannot be loaded; the rig is of no more use then.
    bool restartHost(QString *error);

    HostSession &session() { return *session_; }
    SimulatedPlc &plc() { return *plc_; }
    VirtualLine &line() { return *line_; }
    const DriverApi &driver() const { return library_.api(); }
    qint64 characterTime_ns() const { return characterTime_ns_; }

private:
    Rig() = default;
    bool startHost(QString *error);

    RigSettings settings_;
    HostEvents *events_ = nullptr;
    qint64 characterTime_ns_ = 0;
    DriverLibrary library_;
    std::unique_ptr<HostSession> session_;
    std::unique_ptr<SimulatedPlc> plc_;
    std::unique_ptr<VirtualLine> line_;
};

} // namespace kvt

#endif
