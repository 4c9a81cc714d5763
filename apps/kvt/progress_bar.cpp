#include "apps/kvt/progress_bar.h"

#include "apps/kvt/console.h"
#include "apps/kvt/table/printable.h"

#include <algorithm>

#include <sys/ioctl.h>
#include <unistd.h>

namespace kvt
{

namespace
{

constexpr int LONGEST_BAR = 40;
constexpr int SHORTEST_BAR = 8;
constexpr int USUAL_COLUMNS = 80;

bool canGoBackInLine()
{
    return isatty(STDERR_FILENO) == 1 && qgetenv("TERM") != "dumb" &&
           !qEnvironmentVariableIsEmpty("TERM");
}

int terminalColumns()
{
    winsize size = {};
    const bool known = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return known ? size.ws_col : USUAL_COLUMNS;
}

} // namespace

ProgressBar::ProgressBar(int total) : total_(total), onTerminal_(canGoBackInLine()) {}

void ProgressBar::show(int done, const QString &text)
{
    if (!onTerminal_)
        return;
    const int room = terminalColumns() - 1; // a character in the last column may turn the line
    QString line = QStringLiteral("%1/%2 %3").arg(done).arg(total_).arg(printable(text));
    const int bar = std::min(room - displayWidth(line) - 3, LONGEST_BAR);
    if (bar >= SHORTEST_BAR) {
        const int filled = static_cast<int>(static_cast<qint64>(bar) * done / total_);
        line = QLatin1Char('[') + QString(filled, QLatin1Char('#')) +
               QString(bar - filled, QLatin1Char('.')) + QStringLiteral("] ") + line;
    }
    const int width = std::min(displayWidth(line), room);
    // A wider line from before is written over; in a terminal that became narrower it has turned.
    line = fitted(line, std::min(std::max(width, drawn_), room));
    printProgress(QLatin1Char('\r') + line);
    drawn_ = width;
}

void ProgressBar::clear()
{
    const int width = std::min(drawn_, terminalColumns() - 1);
    if (drawn_ > 0)
        printProgress(QLatin1Char('\r') + QString(width, QLatin1Char(' ')) + QLatin1Char('\r'));
    drawn_ = 0;
}

} // namespace kvt
