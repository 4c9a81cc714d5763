// A progress bar on standard error, if that is a terminal.
#ifndef KVT_APPS_KVT_PROGRESS_BAR_H
#define KVT_APPS_KVT_PROGRESS_BAR_H

#include <QString>

namespace kvt
{

/// Draws one line, as wide as the terminal has room for, and wipes it away at the end. Does nothing
/// where there is no terminal, or a dumb one.
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
    int drawn_ = 0; // columns
};

} // namespace kvt

#endif
