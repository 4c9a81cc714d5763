#include "apps/kvt/line_search.h"

#include "apps/kvt/character_format.h"
#include "apps/kvt/enquiry.h"
#include "apps/kvt/exit_codes.h"
#include "apps/kvt/progress_bar.h"

namespace kvt
{

namespace
{

constexpr int SPEEDS[] = {9600, 19200, 38400, 115200, 57600, 4800, 2400, 1200};

// As CharacterFormat counts parities.
constexpr int NONE = 0;
constexpr int EVEN = 1;
constexpr int ODD = 2;

constexpr CharacterFormat FORMATS[] = {{8, NONE, 1}, {8, EVEN, 1}, {7, EVEN, 1}, {8, ODD, 1},
                                       {7, ODD, 1},  {8, NONE, 2}, {7, NONE, 2}};

// Not every port has every format: a pseudo-terminal has no parity, some adapters no 7 bits.
bool takesSettings(const LineOptions &line)
{
    QString error;
    return makeLine(line)->open(&error) == Opening::Done;
}

// Returns true with `*found` set, or false with the exit status of what came between.
bool asksAll(const LineOptions &line, const QVector<Tag> &probes, ProgressBar *bar, int done,
             bool *found, int *exitCode)
{
    Enquiry enquiry(line, probes);
    *exitCode = enquiry.open();
    if (*exitCode != EXIT_GOOD)
        return false;
    for (int tag = 0; tag < probes.size() && !*found; ++tag) {
        bar->show(done + tag, QStringLiteral("%1 %2, station %3")
                                  .arg(line.serial.baud)
                                  .arg(formatName(line.serial))
                                  .arg(probes.at(tag).station));
        RequestOutcome outcome;
        if (!enquiry.read(tag, &outcome)) {
            bar->clear();
            *exitCode = enquiry.reportStop();
            return false;
        }
        *found = outcome.stationAnswered();
    }
    return true;
}

} // namespace

QVector<SerialSettings> settingsToTry(const SerialSettings &known, bool speedIsFixed,
                                      bool formatIsFixed)
{
    QVector<SerialSettings> formats;
    if (formatIsFixed) {
        formats.append(known);
    } else {
        for (const CharacterFormat &format : FORMATS) {
            formats.append(known);
            format.copyTo(&formats.last());
        }
    }
    if (speedIsFixed)
        return formats;
    QVector<SerialSettings> settings;
    for (const SerialSettings &format : formats) {
        for (const int baud : SPEEDS) {
            settings.append(format);
            settings.last().baud = baud;
        }
    }
    return settings;
}

SearchEnd searchLine(const QVector<SerialSettings> &settings, const QVector<Tag> &probes,
                     LineOptions *line, int *tried, int *exitCode)
{
    ProgressBar bar(settings.size() * probes.size());
    LineOptions trial = *line;
    trial.trace.clear(); // it holds the scan that follows
    trial.replyChecking = ReplyChecking::Refuse;
    *tried = 0;
    for (int i = 0; i < settings.size(); ++i) {
        trial.serial = settings.at(i);
        // A port that takes none of them is not there; that the first one tells.
        if (i > 0 && !takesSettings(trial))
            continue;
        ++*tried;
        bool found = false;
        if (!asksAll(trial, probes, &bar, i * probes.size(), &found, exitCode))
            return SearchEnd::Stopped;
        if (!found)
            continue;
        line->serial = trial.serial;
        return SearchEnd::Found;
    }
    return SearchEnd::NothingAnswers;
}

} // namespace kvt
