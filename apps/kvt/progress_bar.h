// A progress bar on standard error, if that is a terminal.
#ifndef KVT_APPS_KVT_PROGRESS_BAR_H
#define KVT_APPS_KVT_PROGRESS_BAR_H

#include <QString>

namespace kvt
{

/// Draws one line and wipes it away at the end. Does nothing when there is no terminal.
class ProgressBar
{
public:
    /// `total` is the number of steps, above 0.
    explicit ProgressBar(int total);
    ~ProgressBar() { clear(); }
    ProgressBar(const ProgressBar &) = delete;
    ProgressBar &operator=(const ProgressBar &) = delete;

    /// Shows that `done` steps are over, and what is under way.
    void show(int done, const QString &text);

    /// Wipes it away, to make room for other output.
    void clear();

private:
    int total_;
    bool onTerminal_;
    bool drawn_ = false;
};

} // namespace kvt

#endif
