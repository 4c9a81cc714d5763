#include "apps/kvt/host_link.h"

#include "apps/kvt/console.h"
#include "apps/kvt/driver_option.h"

namespace kvt
{

HostLink::~HostLink()
{
    poller_.reset();
    if (!recorder_)
        return;
    recorder_->close(drainTime_ns());
    if (!recorder_->problem().isEmpty())
        reportLoss(QStringLiteral("--trace: %1 is not complete: %2")
                       .arg(traceFile_, recorder_->problem()));
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
    const auto notice = [file = traceFile_](const QString &text) {
        printEvent(QStringLiteral("--trace: %1: %2").arg(file, text));
    };
    const qint64 limit_bytes = options.traceSize_MiB * qint64(1048576);
    const bool recording = recorder_->open(traceFile_, &error, limit_bytes, notice);
    if (recording)
        return true;
    recorder_.reset();
    printError(QStringLiteral("--trace: %1: %2").arg(traceFile_, error));
    return false;
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
