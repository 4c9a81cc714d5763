// Ctrl-C and the signal to terminate, as an event of the event loop.
#ifndef KVT_APPS_KVT_STOP_SIGNAL_H
#define KVT_APPS_KVT_STOP_SIGNAL_H

#include <QObject>
#include <QSocketNotifier>

#include <memory>

namespace kvt
{

/// While it lives, SIGINT and SIGTERM do not end the process but quit its event loop. Make it
/// before any thread, so that all of them leave the signals alone.
class StopSignal : public QObject
{
public:
    StopSignal();
    ~StopSignal() override;

    /// True from the first signal on. The thread of the event loop.
    bool isRequested() const { return requested_; }

private:
    int descriptor_ = -1;
    bool requested_ = false;
    std::unique_ptr<QSocketNotifier> notifier_;
};

} // namespace kvt

#endif
