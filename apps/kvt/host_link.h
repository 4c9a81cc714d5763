// From the options of a line to a host that runs on it.
#ifndef KVT_APPS_KVT_HOST_LINK_H
#define KVT_APPS_KVT_HOST_LINK_H

#include "apps/kvt/line_options.h"
#include "host/trace_recorder.h"

namespace kvt
{

/// The driver and a poller on the line, recorded if the options say so. One at a time.
class HostLink
{
public:
    HostLink() = default;

    /// Tells when the recording ended before its time.
    ~HostLink();
    HostLink(const HostLink &) = delete;
    HostLink &operator=(const HostLink &) = delete;

    /// Loads the driver and begins the recording. False, with a message, when either cannot be.
    bool load(const LineOptions &options);

    /// Puts the poller together, which is not yet started. The tags must be fit to be polled
    /// together; `events` lives longer than the link.
    void connect(const LineOptions &options, const PollerSettings &settings,
                 const QVector<Tag> &tags, HostEvents *events);

    /// The poller; null before `connect`.
    Poller *poller() { return poller_.get(); }
    const Poller *poller() const { return poller_.get(); }

private:
    DriverLibrary library_;
    std::unique_ptr<TraceRecorder> recorder_; // goes after the poller
    QString traceFile_;
    std::unique_ptr<Poller> poller_; // goes before the driver
};

} // namespace kvt

#endif
