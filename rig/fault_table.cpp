#include "rig/fault_table.h"

#include "host/host_time.h"

#include <algorithm>

namespace kvt
{

namespace
{

// Columns of the file that are figures, behind the key of four and before the words.
constexpr int KEY_COLUMNS = 4;
constexpr int WORD_COLUMNS = 3;
struct Column {
    const char *name;
    qint64 CellFigures::*figure;
    bool isTime;
    qint64 slack; // a quarter and so much more is chance: what moves one exchange moves all others;
                  // -1: more is not worse
};
const Column COLUMNS[] = {
    {"strikes", &CellFigures::strikes, false, -1},
    {"values", &CellFigures::values, false, -1},
    {"recovery_ms", &CellFigures::recovery_ms, true, 4000},
    {"recovery_after_ms", &CellFigures::recoveryAfter_ms, true, 4000},
    {"wrong", &CellFigures::wrong, false, 100},
    {"wrong_longest_ms", &CellFigures::wrongLongest_ms, true, -1},
    {"bound_ms", &CellFigures::bound_ms, true, -1},
    {"beyond_bound", &CellFigures::beyondBound, false, 10},
    {"beyond_of_several", &CellFigures::beyondOfSeveral, false, 50},
    {"writes", &CellFigures::writes, false, -1},
    {"writes_lost", &CellFigures::writesLost, false, 20},
    {"writes_doubled", &CellFigures::writesDoubled, false, 50},
    {"writes_unsettled", &CellFigures::writesUnsettled, false, 0},
    {"writes_belied", &CellFigures::writesBelied, false, 2},
};

// Up to a millisecond, so that what is more than nothing is not 0.
qint64 toMilliseconds(qint64 time_ns)
{
    return time_ns < 0 ? -1 : (time_ns + milliseconds(1) - 1) / milliseconds(1);
}

QString keyOf(const FaultCell &cell)
{
    return QStringLiteral("%1,%2,%3,%4")
        .arg(QLatin1String(faultsOfLine().at(cell.fault).name), requestName(cell.request),
             settingsName(cell.settings),
             cell.paced ? QStringLiteral("paced") : QStringLiteral("unpaced"));
}

// The commonest first.
QStringList verdictsOf(const Findings &findings)
{
    QStringList verdicts = findings.verdicts.keys();
    std::sort(verdicts.begin(), verdicts.end(), [&](const QString &one, const QString &other) {
        return findings.verdicts.value(one) > findings.verdicts.value(other);
    });
    return verdicts;
}

QString sorted(const QSet<QString> &words)
{
    QStringList list = words.values();
    list.sort();
    return list.join(QStringLiteral("; "));
}

// Where nothing can be told, the number of faults makes that of wrong values.
bool isPhysics(const QString &group)
{
    const QString name = group.section(QLatin1Char(','), 0, 0);
    return std::any_of(faultsOfLine().cbegin(), faultsOfLine().cend(), [&](const auto &fault) {
        return name == QLatin1String(fault.name) && fault.limit == FaultLimit::Physics;
    });
}

QString groupKey(const QStringList &key)
{
    return QStringLiteral("%1, %2, %3").arg(key.at(0), key.at(2), key.at(3));
}

bool parseFigures(const QStringList &cells, CellFigures *figures)
{
    if (cells.size() != KEY_COLUMNS + static_cast<int>(std::size(COLUMNS)) + WORD_COLUMNS)
        return false;
    bool isNumber = true;
    int place = KEY_COLUMNS;
    for (const Column &column : COLUMNS) {
        figures->*column.figure = cells.at(place).toLongLong(&isNumber);
        if (!isNumber)
            return false;
        ++place;
    }
    return true;
}

} // namespace

bool operator==(const CellFigures &one, const CellFigures &other)
{
    return std::all_of(std::begin(COLUMNS), std::end(COLUMNS), [&](const Column &column) {
        return one.*column.figure == other.*column.figure;
    });
}

CellFigures figuresOf(const CellResult &result)
{
    const Findings &findings = result.findings;
    CellFigures figures;
    figures.strikes = result.strikes;
    figures.values = findings.values;
    figures.recovery_ms = toMilliseconds(findings.recovery_ns);
    figures.recoveryAfter_ms = toMilliseconds(findings.recoveryAfter_ns);
    figures.wrong = findings.wrong;
    figures.wrongLongest_ms = toMilliseconds(findings.wrongLongest_ns);
    figures.bound_ms = toMilliseconds(findings.bound_ns);
    figures.beyondBound = findings.beyondBound;
    figures.beyondOfSeveral = findings.beyondOfSeveral;
    figures.writes = findings.writes;
    figures.writesLost = findings.writesLost;
    figures.writesDoubled = findings.writesDoubled;
    figures.writesUnsettled = findings.writesUnsettled;
    figures.writesBelied = findings.writesBelied;
    return figures;
}

QString csvHead()
{
    QString head = QStringLiteral("fault,request,settings,line");
    for (const Column &column : COLUMNS)
        head += QLatin1Char(',') + QLatin1String(column.name);
    return head + QStringLiteral(",verdicts,qualities,told");
}

QString csvLine(const CellResult &result)
{
    const CellFigures figures = figuresOf(result);
    QString line = keyOf(result.cell);
    for (const Column &column : COLUMNS)
        line += QLatin1Char(',') + QString::number(figures.*column.figure);
    return QStringLiteral("%1,%2,%3,%4")
        .arg(line, verdictsOf(result.findings).join(QStringLiteral("; ")),
             sorted(result.findings.qualities), sorted(result.findings.told));
}

void takeTogether(CellFigures *group, const CellFigures &figures)
{
    for (const Column &column : COLUMNS) {
        qint64 &sum = group->*column.figure;
        const qint64 more = figures.*column.figure;
        sum = column.isTime ? std::max(sum, more) : sum + more;
    }
}

CellGroups groupsOf(const QVector<CellResult> &results)
{
    CellGroups groups;
    for (const CellResult &result : results)
        takeTogether(&groups[groupKey(keyOf(result.cell).split(QLatin1Char(',')))],
                     figuresOf(result));
    return groups;
}

CellGroups groupsOf(const QString &text)
{
    CellGroups groups;
    for (const QString &line : text.split(QLatin1Char('\n'))) {
        const QStringList cells = line.split(QLatin1Char(','));
        CellFigures figures;
        if (parseFigures(cells, &figures))
            takeTogether(&groups[groupKey(cells)], figures);
    }
    return groups;
}

QStringList worse(const CellGroups &before, const CellGroups &now)
{
    QStringList found;
    for (auto group = now.begin(); group != now.end(); ++group) {
        const auto known = before.constFind(group.key());
        if (known == before.constEnd()) {
            found.append(group.key() + QStringLiteral(": has not been there"));
            continue;
        }
        if (isPhysics(group.key()))
            continue;
        for (const Column &column : COLUMNS) {
            const qint64 was = *known.*column.figure;
            const qint64 is = *group.*column.figure;
            if (column.slack >= 0 && is > was + was / 4 + column.slack)
                found.append(QStringLiteral("%1: %2 %3, was %4")
                                 .arg(group.key(), QLatin1String(column.name))
                                 .arg(is)
                                 .arg(was));
        }
    }
    return found;
}

QStringList brokenPromises(const CellResult &result)
{
    const FaultOfLine &fault = faultsOfLine().at(result.cell.fault);
    const Findings &findings = result.findings;
    const bool checksReplies =
        result.cell.settings != CellSettings::Off && result.cell.settings != CellSettings::Count;
    const bool hasReason = *fault.reason != '\0';
    QStringList broken;
    if (!result.error.isEmpty())
        broken.append(result.error);
    if (findings.recoveryAfter_ns < 0)
        broken.append(QStringLiteral("no good value since the last fault"));
    if (findings.writesUnsettled > 0)
        broken.append(QStringLiteral("writes unsettled"));
    if (!checksReplies || fault.limit == FaultLimit::Physics)
        return broken;
    if (findings.writesBelied > 0 && !hasReason)
        broken.append(QStringLiteral("writes acknowledged that were not carried out"));
    if (fault.limit == FaultLimit::Kept && findings.wrong > 0)
        broken.append(QStringLiteral("wrong values shown as good"));
    if (findings.beyondBound > 0 && !(result.cell.settings == CellSettings::Confirm && hasReason))
        broken.append(QStringLiteral("wrong values shown as good beyond the bound"));
    return broken;
}

} // namespace kvt
