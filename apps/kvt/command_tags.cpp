// kvt tags: checks a tag list, or prints one to begin with.
#include "apps/kvt/character_format.h"
#include "apps/kvt/commands.h"
#include "apps/kvt/common/counted.h"
#include "apps/kvt/console.h"
#include "apps/kvt/exit_codes.h"
#include "apps/kvt/line_options.h"
#include "apps/kvt/options.h"
#include "apps/kvt/outcome_text.h"
#include "apps/kvt/plan_report.h"
#include "apps/kvt/tag_template.h"
#include "host/class_plan.h"
#include "tags/duration_text.h"
#include "tags/tag_watch.h"

namespace kvt
{

namespace
{

const QString JSON = QStringLiteral("json");
constexpr qint64 TURNAROUND_ns = milliseconds(2);
constexpr qint64 OVERHEAD_ns = microseconds(200);

/// Tags that are read more often than they ask for, since another shares their request.
void warnOfShared(TagListResult *list)
{
    const TagIndex index(list->tags);
    const ClassPlan classes(list->tags, index);
    for (int tag = 0; tag < list->tags.size(); ++tag) {
        const qint64 interval_ns = intervalOf_ns(list->tags.at(tag));
        const int entry = classes.entryOf(index.readKeyOf(index.cellOf(tag)));
        const qint64 real_ns =
            entry < 0 ? 0 : classes.classes().at(classes.entries().at(entry).readClass).interval_ns;
        if (interval_ns == real_ns)
            continue;
        list->warnings.append(
            {list->lines.at(tag), 0, QString(),
             QStringLiteral("tag \"%1\" has an interval of %2 and is read %3: another tag shares "
                            "its request")
                 .arg(list->tags.at(tag).name, durationText(interval_ns),
                      real_ns == 0 ? QStringLiteral("as often as the line allows")
                                   : QStringLiteral("every ") + durationText(real_ns))});
    }
}

QString scanText(const ScanPlan &plan)
{
    return plan.scan_ns == 0 ? QString()
                             : QStringLiteral("tags without interval: a scan of %1\n")
                                   .arg(timeText(plan.scan_ns));
}

/// What a list takes of the line; nothing when it has errors.
ScanPlan planOf(const TagListResult &list, const SerialSettings &serial)
{
    PlanSettings settings;
    settings.engine.characterTime_ns = serial.characterTime_ns();
    settings.turnaround_ns = TURNAROUND_ns;
    settings.overhead_ns = OVERHEAD_ns;
    return list.errors.isEmpty() ? planScan(list.tags, settings) : ScanPlan();
}

QString summaryText(const QVector<Tag> &tags, const ScanPlan &plan, const SerialSettings &serial)
{
    return QStringLiteral("%1, %2, %3 for all of them\nat %4 baud:\n")
               .arg(counted(tags.size(), "tag", "tags"),
                    counted(plan.stations.size(), "station", "stations"),
                    counted(plan.reads, "request", "requests"))
               .arg(serial.baud) +
           scanText(plan) + classesText(plan.classes);
}

void printText(const QString &path, const TagListResult &list, const SerialSettings &serial)
{
    printProblems(path, list);
    if (list.errors.isEmpty())
        printOut(summaryText(list.tags, planOf(list, serial), serial));
    printOut(QStringLiteral("%1, %2\n")
                 .arg(counted(list.errors.size(), "error", "errors"),
                      counted(list.warnings.size(), "warning", "warnings")));
}

QJsonObject problemToJson(const QString &path, const ListProblem &found)
{
    const TagError &error = found.error;
    QJsonObject problem{{QStringLiteral("severity"),
                         found.isWarning ? QStringLiteral("warning") : QStringLiteral("error")},
                        {QStringLiteral("file"), path},
                        {QStringLiteral("text"), error.text}};
    if (error.line > 0)
        problem.insert(QStringLiteral("line"), error.line);
    if (error.column > 0)
        problem.insert(QStringLiteral("column"), error.column);
    if (!error.columnName.isEmpty())
        problem.insert(QStringLiteral("column_name"), error.columnName);
    return problem;
}

void printJson(const QString &path, const TagListResult &list, const SerialSettings &serial)
{
    QJsonArray problems;
    for (const ListProblem &found : problemsOf(list))
        problems.append(problemToJson(path, found));
    QJsonObject summary{{QStringLiteral("errors"), list.errors.size()},
                        {QStringLiteral("warnings"), list.warnings.size()}};
    const ScanPlan plan = planOf(list, serial);
    if (list.errors.isEmpty()) {
        summary.insert(QStringLiteral("tags"), list.tags.size());
        summary.insert(QStringLiteral("stations"), plan.stations.size());
        summary.insert(QStringLiteral("reads"), plan.reads);
        summary.insert(QStringLiteral("baud"), serial.baud);
        summary.insert(QStringLiteral("format"), formatName(serial));
        summary.insert(QStringLiteral("scan_ms"), millisecondsOf(plan.scan_ns));
        addClassLoad(plan.classes, &summary);
    }
    printOut(jsonLine({{QStringLiteral("problems"), problems},
                       {QStringLiteral("classes"), classesToJson(plan.classes)},
                       {QStringLiteral("summary"), summary}}));
}

int check(const QString &path, const SerialSettings &serial, bool asJson)
{
    TagListResult list = loadPollableList(path);
    if (list.errors.isEmpty())
        warnOfShared(&list);
    if (asJson)
        printJson(path, list, serial);
    else
        printText(path, list, serial);
    return list.errors.isEmpty() ? EXIT_GOOD : EXIT_USAGE;
}

int usage(const QString &text)
{
    printError(QStringLiteral("tags: ") + text);
    return EXIT_USAGE;
}

} // namespace

int runTags(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "check prints all that is wrong or doubtful about a tag list, how many requests it takes, "
        "and how often its tags will be read at a speed. The exit status is 2 if something is "
        "wrong. template prints a commented list to begin with. The columns of a list are "
        "described "
        "in man kvt and, with examples, in docs/values.md of the sources."));
    parser.addPositionalArgument(QStringLiteral("check LIST"),
                                 QStringLiteral("Checks a CSV file."));
    parser.addPositionalArgument(QStringLiteral("template"),
                                 QStringLiteral("Prints a list to begin with."),
                                 QStringLiteral("| template"));
    addSpeedOptions(&parser);
    parser.addOption({JSON, QStringLiteral("Print what check finds as a JSON object.")});
    int exitCode = EXIT_GOOD;
    if (parseOptions(&parser, QStringLiteral("tags"), arguments, &exitCode))
        return exitCode;
    const QStringList words = parser.positionalArguments();
    const QString what = words.value(0);
    SerialSettings serial;
    if (!readSpeedOptions(parser, &serial))
        return EXIT_USAGE;
    if (what == QLatin1String("template") && words.size() == 1) {
        printOut(tagTemplate());
        return EXIT_GOOD;
    }
    if (what == QLatin1String("check") && words.size() == 2)
        return check(words.at(1), serial, parser.isSet(JSON));
    if (what == QLatin1String("check"))
        return usage(words.size() == 1 ? QStringLiteral("check takes the name of a list")
                                       : QStringLiteral("what is \"%1\"?").arg(words.at(2)));
    if (what == QLatin1String("template"))
        return usage(QStringLiteral("what is \"%1\"?").arg(words.at(1)));
    return usage(what.isEmpty() ? QStringLiteral("check or template is missing")
                                : QStringLiteral("\"%1\" is neither check nor template").arg(what));
}

} // namespace kvt
