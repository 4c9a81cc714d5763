// The tables of a comparison.
#ifndef KVT_BENCH_PEERS_REPORT_H
#define KVT_BENCH_PEERS_REPORT_H

#include "bench/peers/trial.h"

#include <QVector>

namespace kvt
{

/// One master at one speed.
struct ComparisonRow {
    QString title;
    TrialSettings settings;
    QVector<TrialResult> rounds; ///< as many in every row
};

/// Speeds one after another, the rows of each with the bare loop first.
using Comparison = QVector<ComparisonRow>;

/// Medians over the rounds as a Markdown table, ratios being medians of the ratios of each round.
QString markdownTable(const Comparison &comparison);

/// Every round, one a line.
QString csvTable(const Comparison &comparison);

} // namespace kvt

#endif
