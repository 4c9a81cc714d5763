#include "tags/nearest_word.h"

#include <QVector>

#include <algorithm>

namespace kvt
{

namespace
{

// Optimal string alignment: row i of the table says what the first i letters of `one` cost.
int slipsBetween(const QString &one, const QString &other)
{
    QVector<QVector<int>> cost(one.size() + 1, QVector<int>(other.size() + 1));
    for (int i = 0; i <= one.size(); ++i) {
        for (int j = 0; j <= other.size(); ++j) {
            if (i == 0 || j == 0) {
                cost[i][j] = i + j;
                continue;
            }
            const int exchange = one.at(i - 1) == other.at(j - 1) ? 0 : 1;
            cost[i][j] =
                std::min({cost[i - 1][j] + 1, cost[i][j - 1] + 1, cost[i - 1][j - 1] + exchange});
            if (i > 1 && j > 1 && one.at(i - 1) == other.at(j - 2) &&
                one.at(i - 2) == other.at(j - 1))
                cost[i][j] = std::min(cost[i][j], cost[i - 2][j - 2] + 1);
        }
    }
    return cost[one.size()][other.size()];
}

} // namespace

QString nearestWord(const QString &word, const QStringList &known)
{
    constexpr int LONGEST = 40; // what is longer was not meant to be one of a few short words
    if (word.isEmpty() || word.size() > LONGEST)
        return QString();
    QString nearest;
    int fewest = std::max(word.size() / 3, 1) + 1;
    for (const QString &candidate : known) {
        const int slips = candidate.startsWith(word) ? 0 : slipsBetween(word, candidate);
        if (slips >= fewest)
            continue;
        fewest = slips;
        nearest = candidate;
    }
    return nearest;
}

QString likelyNames(const QString &word, QStringList names)
{
    constexpr int MOST = 10;
    QStringList lower;
    for (const QString &name : names)
        lower.append(name.toLower());
    const int nearest = lower.indexOf(nearestWord(word.toLower(), lower));
    if (nearest > 0)
        names.move(nearest, 0);
    QStringList quoted;
    for (const QString &name : names.mid(0, MOST))
        quoted.append(QLatin1Char('"') + name + QLatin1Char('"'));
    if (names.size() > MOST)
        quoted.append(QStringLiteral("and %1 more").arg(names.size() - MOST));
    return quoted.join(QStringLiteral(", "));
}

} // namespace kvt
