// Ctrl-C and the signals to terminate and to hang up, as an event of the event loop.
#ifndef KVT_APPS_KVT_STOP_SIGNAL_H
#define KVT_APPS_KVT_STOP_SIGNAL_H

#include <QObject>
#include <QSocketNotifier>

#include <memory>

namespace kvt
{

/// While it lives, SIGINT, SIGTERM and SIGHUP do not end the process but quit its event loop. Make
/// it before any thread, so that all of them leave the signals alone.
class StopSignal : public QObject
{
public:
    StopSignal();
    ~StopSignal() override;

    /// True from the first signal on, be the object gone. Any thread.
    static bool wasRequested();

private:
    int descriptor_ = -1;
    std::unique_ptr<QSocketNotifier> notifier_;
};

} // namespace kvt

#endif
