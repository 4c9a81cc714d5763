#include "rig/fault_page.h"

#include "rig/fault_table.h"

#include <algorithm>

namespace kvt
{

namespace
{

constexpr int MOST_WORDS = 3;

// The cells of one fault that have something in common, taken together.
struct Group {
    CellFigures worst;
    QMap<QString, int> verdicts;
    QSet<QString> qualities;
    QSet<QString> told;
};

template <typename Condition>
Group groupOf(const QVector<CellResult> &results, int fault, Condition condition)
{
    Group group;
    for (const CellResult &result : results) {
        if (result.cell.fault != fault || !condition(result.cell))
            continue;
        takeTogether(&group.worst, figuresOf(result));
        const Findings &findings = result.findings;
        for (auto verdict = findings.verdicts.begin(); verdict != findings.verdicts.end();
             ++verdict)
            group.verdicts[verdict.key()] += verdict.value();
        group.qualities += findings.qualities;
        group.told += findings.told;
    }
    return group;
}

Group groupOf(const QVector<CellResult> &results, int fault, CellSettings settings, bool paced)
{
    return groupOf(results, fault, [&](const FaultCell &cell) {
        return cell.settings == settings && cell.paced == paced;
    });
}

Group groupOf(const QVector<CellResult> &results, int fault, CellSettings settings)
{
    return groupOf(results, fault,
                   [&](const FaultCell &cell) { return cell.settings == settings; });
}

// The commonest first.
QString verdictText(const Group &group)
{
    QStringList verdicts = group.verdicts.keys();
    std::sort(verdicts.begin(), verdicts.end(), [&](const QString &one, const QString &other) {
        return group.verdicts.value(one) > group.verdicts.value(other);
    });
    return verdicts.mid(0, MOST_WORDS).join(QStringLiteral(", "));
}

QString words(QSet<QString> set)
{
    set.remove(QStringLiteral("none"));
    QStringList list = set.values();
    list.sort();
    return list.join(QStringLiteral(", "));
}

QString row(const QStringList &cells)
{
    return QStringLiteral("| ") + cells.join(QStringLiteral(" | ")) + QStringLiteral(" |\n");
}

QString limitText(const FaultOfLine &fault)
{
    const QString reason = QLatin1String(fault.reason);
    switch (fault.limit) {
    case FaultLimit::Kept:
        return QStringLiteral("none wrong");
    case FaultLimit::Bounded:
        return QStringLiteral("bounded") + (reason.isEmpty() ? QString() : QStringLiteral("; ")) +
               reason;
    case FaultLimit::Physics:
        break;
    }
    return QStringLiteral("physics: ") + reason;
}

QString nameOf(int fault)
{
    return QLatin1String(faultsOfLine().at(fault).name);
}

QString toldTable(const QVector<CellResult> &results)
{
    QString text = row({QStringLiteral("fault"), QStringLiteral("what happens"),
                        QStringLiteral("limit"), QStringLiteral("verdict on the attempt"),
                        QStringLiteral("quality until good again"), QStringLiteral("told")}) +
                   QStringLiteral("|---|---|---|---|---|---|\n");
    for (int fault = 0; fault < faultsOfLine().size(); ++fault) {
        const Group group = groupOf(results, fault, CellSettings::Default);
        text += row({nameOf(fault), QLatin1String(faultsOfLine().at(fault).text),
                     limitText(faultsOfLine().at(fault)), verdictText(group),
                     words(group.qualities), words(group.told)});
    }
    return text;
}

// Wrong values, and how many of them beyond the bound: with one fault at a time, with several.
QString wrongText(const CellFigures &figures)
{
    if (figures.wrong == 0)
        return QStringLiteral("0");
    return QStringLiteral("%1 (%2, %3)")
        .arg(figures.wrong)
        .arg(figures.beyondBound)
        .arg(figures.beyondOfSeveral);
}

QString defaultTable(const QVector<CellResult> &results)
{
    QString text = QStringLiteral(
        "| fault | strikes | paced: recovery, ms | behind 5 s, ms | wrong | longest, ms | bound, "
        "ms "
        "| unpaced: recovery, ms | behind 5 s, ms | wrong | longest, ms | bound, ms "
        "| writes | lost | doubled | unsettled | belied |\n"
        "|---|---:|---:|---:|---:|---:|---:|---:|---:|---:|---:|---:|---:|---:|---:|---:|---:|\n");
    for (int fault = 0; fault < faultsOfLine().size(); ++fault) {
        const CellFigures all = groupOf(results, fault, CellSettings::Default).worst;
        QStringList cells = {nameOf(fault), QString::number(all.strikes)};
        for (const bool paced : {true, false}) {
            const CellFigures one = groupOf(results, fault, CellSettings::Default, paced).worst;
            cells << QString::number(one.recovery_ms) << QString::number(one.recoveryAfter_ms)
                  << wrongText(one) << QString::number(one.wrongLongest_ms)
                  << QString::number(one.bound_ms);
        }
        for (const qint64 count :
             {all.writes, all.writesLost, all.writesDoubled, all.writesUnsettled, all.writesBelied})
            cells << QString::number(count);
        text += row(cells);
    }
    return text;
}

QString otherTable(const QVector<CellResult> &results)
{
    QString text = QStringLiteral("| fault |");
    QString rule = QStringLiteral("|---|");
    constexpr CellSettings OTHERS[] = {CellSettings::Confirm, CellSettings::Refuse,
                                       CellSettings::Count, CellSettings::Off};
    for (const CellSettings settings : OTHERS) {
        text +=
            QStringLiteral(" %1: recovery, ms | wrong | unsettled |").arg(settingsName(settings));
        rule += QStringLiteral("---:|---:|---:|");
    }
    text += QLatin1Char('\n') + rule + QLatin1Char('\n');
    for (int fault = 0; fault < faultsOfLine().size(); ++fault) {
        QStringList cells = {nameOf(fault)};
        for (const CellSettings settings : OTHERS) {
            const CellFigures figures = groupOf(results, fault, settings).worst;
            cells << QString::number(figures.recovery_ms) << wrongText(figures)
                  << QString::number(figures.writesUnsettled);
        }
        text += row(cells);
    }
    return text;
}

CellFigures sumOf(const QVector<CellResult> &results, CellSettings settings, FaultLimit limit)
{
    CellFigures sum;
    for (const CellResult &result : results)
        if (result.cell.settings == settings && faultsOfLine().at(result.cell.fault).limit == limit)
            takeTogether(&sum, figuresOf(result));
    return sum;
}

QString summaryTable(const QVector<CellResult> &results)
{
    QString text =
        QStringLiteral("| settings | faults | values | wrong: faults kept off | bounded | physics "
                       "| writes | lost | doubled | unsettled | belied |\n"
                       "|---|---:|---:|---:|---:|---:|---:|---:|---:|---:|---:|\n");
    for (int i = 0; i < CELL_SETTINGS; ++i) {
        const auto settings = static_cast<CellSettings>(i);
        QStringList cells = {settingsName(settings)};
        CellFigures all;
        QStringList wrong;
        for (const FaultLimit limit :
             {FaultLimit::Kept, FaultLimit::Bounded, FaultLimit::Physics}) {
            const CellFigures sum = sumOf(results, settings, limit);
            takeTogether(&all, sum);
            wrong.append(wrongText(sum));
        }
        cells << QString::number(all.strikes) << QString::number(all.values) << wrong;
        for (const qint64 count :
             {all.writes, all.writesLost, all.writesDoubled, all.writesUnsettled, all.writesBelied})
            cells << QString::number(count);
        text += row(cells);
    }
    return text;
}

} // namespace

QString faultPage(const QVector<CellResult> &results)
{
    return QStringLiteral("## All in all\n\n") + summaryTable(results) +
           QStringLiteral("\n## What is told\n\n") + toldTable(results) +
           QStringLiteral("\n## Figures with the default settings\n\n") + defaultTable(results) +
           QStringLiteral("\n## Figures with other settings\n\n") + otherTable(results);
}

} // namespace kvt
