#include "apps/kvt/host_link.h"

#include "apps/kvt/console.h"
#include "apps/kvt/driver_option.h"

namespace kvt
{

HostLink::~HostLink()
{
    poller_.reset();
    if (recorder_ && !recorder_->endReason().isEmpty())
        printError(QStringLiteral("--trace: %1 is not complete: %2")
                       .arg(traceFile_, recorder_->endReason()));
}

bool HostLink::load(const LineOptions &options)
{
    if (!loadDriver(options.driver, &library_))
        return false;
    if (options.trace.isEmpty())
        return true;
    QString error;
    traceFile_ = options.trace;
    recorder_ = std::make_unique<TraceRecorder>(monotonicNow_ns);
    const bool recording = recorder_->open(traceFile_, &error);
    if (!recording)
        printError(QStringLiteral("--trace: %1: %2").arg(traceFile_, error));
    return recording;
}

void HostLink::connect(const LineOptions &options, const PollerSettings &settings,
                       const QVector<Tag> &tags, HostEvents *events)
{
    DriverApi api = library_.api();
    PollerSettings tapped = settings;
    if (recorder_) {
        api = recorder_->attach(api);
        tapped.session.engine.tap = recorder_.get();
    }
    poller_ = std::make_unique<Poller>(api, tapped, tags, makeLine(options), events);
}

} // namespace kvt
