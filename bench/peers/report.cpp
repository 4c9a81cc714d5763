#include "bench/peers/report.h"

#include <algorithm>

namespace kvt
{

namespace
{

using Figure = double TrialResult::*;

double median(QVector<double> values)
{
    if (values.isEmpty())
        return 0;
    std::sort(values.begin(), values.end());
    const int middle = values.size() / 2;
    return values.size() % 2 == 1 ? values.at(middle)
                                  : (values.at(middle - 1) + values.at(middle)) / 2;
}

double medianOf(const ComparisonRow &row, Figure figure)
{
    QVector<double> values;
    for (const TrialResult &round : row.rounds)
        values.append(round.*figure);
    return median(values);
}

QString number(double value, int decimals)
{
    return QString::number(value, 'f', decimals);
}

// The median of the ratios of the rounds, the least and the greatest.
QString ratio(const ComparisonRow &row, const ComparisonRow &base, Figure figure, int decimals)
{
    QVector<double> ratios;
    for (int i = 0; i < row.rounds.size(); ++i)
        if (base.rounds.at(i).*figure > 0)
            ratios.append(row.rounds.at(i).*figure / base.rounds.at(i).*figure);
    if (ratios.isEmpty())
        return QString();
    std::sort(ratios.begin(), ratios.end());
    return QStringLiteral("%1 (%2 to %3)")
        .arg(number(median(ratios), decimals), number(ratios.first(), decimals),
             number(ratios.last(), decimals));
}

QString pair(const ComparisonRow &row, Figure first, Figure second)
{
    return QStringLiteral("%1 / %2").arg(number(medianOf(row, first), 1),
                                         number(medianOf(row, second), 1));
}

QString markdownRow(const ComparisonRow &row, const ComparisonRow &floor)
{
    const bool paced = row.settings.baud > 0;
    const QString share = number(100 * medianOf(row, &TrialResult::lineShare), 2);
    const QStringList cells = {
        row.title, number(medianOf(row, &TrialResult::perSecond), paced ? 1 : 0),
        // A reply in RTU is one byte shorter, so that on a paced line only shares can be compared.
        paced ? QString() : ratio(row, floor, &TrialResult::perSecond, 3),
        paced ? share : QString(),
        paced ? ratio(row, floor, &TrialResult::lineShare, 3) : QString(),
        number(medianOf(row, &TrialResult::cpu_us), 2), ratio(row, floor, &TrialResult::cpu_us, 2),
        pair(row, &TrialResult::period_p50_us, &TrialResult::period_p99_us),
        pair(row, &TrialResult::gap_p50_us, &TrialResult::gap_p99_us)};
    return QStringLiteral("| %1 |\n").arg(cells.join(QStringLiteral(" | ")));
}

QString speedName(int baud)
{
    return baud > 0 ? QStringLiteral("%L1 baud").arg(baud) : QStringLiteral("free-running");
}

} // namespace

QString markdownTable(const Comparison &comparison)
{
    QString text =
        QStringLiteral("| Master | per s | ÷ loop | % of the line | ÷ loop | CPU, µs | ÷ loop | "
                       "transaction, µs, p50 / p99 | answer to request, µs, p50 / p99 |\n"
                       "|---|---:|---:|---:|---:|---:|---:|---:|---:|\n");
    const ComparisonRow *floor = nullptr;
    for (const ComparisonRow &row : comparison) {
        if (floor == nullptr || floor->settings.baud != row.settings.baud) {
            floor = &row;
            text +=
                QStringLiteral("| **%1** | | | | | | | | |\n").arg(speedName(row.settings.baud));
        }
        text += markdownRow(row, *floor);
    }
    return text;
}

QString csvTable(const Comparison &comparison)
{
    QString text = QStringLiteral("baud,master,round,transactions,per_second,line_share,cpu_us,"
                                  "transaction_p50_us,transaction_p99_us,gap_p50_us,gap_p99_us\n");
    for (const ComparisonRow &row : comparison) {
        for (int i = 0; i < row.rounds.size(); ++i) {
            const TrialResult &round = row.rounds.at(i);
            const QStringList cells = {QString::number(row.settings.baud),
                                       row.title,
                                       QString::number(i + 1),
                                       QString::number(round.transactions),
                                       number(round.perSecond, 2),
                                       number(round.lineShare, 5),
                                       number(round.cpu_us, 3),
                                       number(round.period_p50_us, 2),
                                       number(round.period_p99_us, 2),
                                       number(round.gap_p50_us, 2),
                                       number(round.gap_p99_us, 2)};
            text += cells.join(QLatin1Char(',')) + QLatin1Char('\n');
        }
    }
    return text;
}

} // namespace kvt
