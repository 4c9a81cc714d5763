#include "apps/kvt/progress_bar.h"

#include "apps/kvt/console.h"

#include <cstdio>

namespace kvt
{

namespace
{

const int WIDTH = 40;

}

ProgressBar::ProgressBar(int total) : total_(total), onTerminal_(errorIsTerminal()) {}

void ProgressBar::show(int done, const QString &text)
{
    if (!onTerminal_)
        return;
    const int filled = WIDTH * done / total_;
    const QString bar =
        QString(filled, QLatin1Char('#')) + QString(WIDTH - filled, QLatin1Char('.'));
    (void)std::fprintf(stderr, "\r[%s] %d/%d %s\x1b[K", qPrintable(bar), done, total_,
                       qPrintable(text));
    drawn_ = true;
}

void ProgressBar::clear()
{
    if (drawn_)
        (void)std::fputs("\r\x1b[K", stderr);
    drawn_ = false;
}

} // namespace kvt
