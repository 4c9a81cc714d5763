#include "bench/peers/comparison.h"

namespace kvt
{

namespace
{

ComparisonRow row(const char *master, int baud, const ComparisonSettings &settings)
{
    ComparisonRow result;
    result.settings.master = masterNamed(QLatin1String(master));
    result.settings.baud = baud;
    result.settings.length.warmUp_ns = settings.run_ns / 5;
    result.settings.length.measured_ns = settings.run_ns;
    result.title = QLatin1String(result.settings.master->title);
    return result;
}

Comparison rowsAt(int baud, const ComparisonSettings &settings)
{
    Comparison rows = {row("floor", baud, settings), row("host", baud, settings),
                       row("libmodbus", baud, settings), row("qt", baud, settings),
                       row("floor", baud, settings)};
    rows.last().title += QStringLiteral(" again");
    if (baud > 0) {
        for (const char *const name : {"libmodbus", "qt"}) {
            ComparisonRow silent = row(name, baud, settings);
            silent.settings.rtuSilences = true;
            silent.title += QStringLiteral(", slave with silences");
            rows.insert(rows.size() - 1, silent);
        }
    }
    return rows;
}

} // namespace

bool runComparison(const ComparisonSettings &settings, Comparison *comparison, QString *error)
{
    comparison->clear();
    for (const int baud : settings.speeds) {
        Comparison rows = rowsAt(baud, settings);
        for (int round = 0; round < settings.rounds; ++round) {
            // Whoever comes first, or behind whom, changes from round to round.
            for (int turn = 0; turn < rows.size(); ++turn) {
                ComparisonRow &entry = rows[(round + turn) % rows.size()];
                TrialResult result;
                if (!runTrial(entry.settings, &result, error))
                    return false;
                entry.rounds.append(result);
            }
        }
        *comparison += rows;
    }
    return true;
}

} // namespace kvt
