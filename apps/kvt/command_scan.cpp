// kvt scan: which stations answer.
#include "apps/kvt/character_format.h"
#include "apps/kvt/commands.h"
#include "apps/kvt/common/counted.h"
#include "apps/kvt/console.h"
#include "apps/kvt/enquiry.h"
#include "apps/kvt/exit_codes.h"
#include "apps/kvt/line_search.h"
#include "apps/kvt/options.h"
#include "apps/kvt/outcome_text.h"
#include "apps/kvt/progress_bar.h"
#include "apps/kvt/report_json.h"
#include "apps/kvt/request_report.h"
#include "apps/kvt/target.h"
#include "tags/tag_address.h"

#include <QRegularExpression>

namespace kvt
{

namespace
{

struct ScanOptions {
    LineOptions line;
    Tag probe; // what each station is asked for
    int first = 1;
    int last = 32;
    QVector<SerialSettings> search; // speeds and formats to try first; empty: as `line` says
};

QVector<Tag> probes(const ScanOptions &options)
{
    QVector<Tag> tags;
    for (int station = options.first; station <= options.last; ++station) {
        tags.append(options.probe);
        tags.last().station = station;
    }
    return tags;
}

void printStation(const Tag &probe, const RequestOutcome &outcome, bool json)
{
    if (json) {
        QJsonObject object = requestToJson(probe, outcome);
        object.insert(QStringLiteral("answers"), outcome.stationAnswered());
        printOut(jsonLine(object));
    } else if (outcome.stationAnswered()) {
        printOut(QStringLiteral("station %1 answers, %2%3\n")
                     .arg(probe.station)
                     .arg(replyText(outcome),
                          outcome.good ? QString() : QStringLiteral(" (refuses the address)")));
    } else if (outcome.end != AttemptEnd::NoReply) {
        printOut(QStringLiteral("station %1: %2\n")
                     .arg(probe.station)
                     .arg(outcomeText(outcome.end, outcome.resultCode)));
    }
}

// `asked` is less than `wanted` if the scan was cut short.
void printSummary(int answers, int asked, int wanted, bool json)
{
    const bool complete = asked == wanted;
    if (json) {
        const QJsonObject summary{{QStringLiteral("asked"), asked},
                                  {QStringLiteral("answering"), answers},
                                  {QStringLiteral("complete"), complete}};
        printOut(jsonLine({{QStringLiteral("summary"), summary}}));
    } else if (complete) {
        printOut(QStringLiteral("%1 of %2 %3\n")
                     .arg(answers)
                     .arg(counted(asked, "station", "stations"),
                          answers == 1 ? QStringLiteral("answers") : QStringLiteral("answer")));
    } else {
        printOut(QStringLiteral("cut short: %1 of %2 asked so far %3, %4 asked\n")
                     .arg(answers)
                     .arg(counted(asked, "station", "stations"),
                          answers == 1 ? QStringLiteral("answers") : QStringLiteral("answer"),
                          counted(wanted - asked, "was not", "were not")));
    }
}

// Finds out speed and format. EXIT_GOOD if they are known then.
int find(ScanOptions *options)
{
    int exitCode = EXIT_GOOD;
    int tried = 0;
    switch (searchLine(options->search, probes(*options), &options->line, &tried, &exitCode)) {
    case SearchEnd::Stopped:
        return exitCode;
    case SearchEnd::NothingAnswers:
        printError(QStringLiteral("no station answers: ") +
                   counted(tried, "setting that the port takes was tried",
                           "settings that the port takes were tried"));
        return EXIT_NO_ANSWER;
    case SearchEnd::Found:
        break;
    }
    const SerialSettings &serial = options->line.serial;
    if (options->line.json)
        printOut(jsonLine({{QStringLiteral("baud"), serial.baud},
                           {QStringLiteral("format"), formatName(serial)}}));
    else
        printOut(QStringLiteral("found: --baud %1 --format %2\n")
                     .arg(serial.baud)
                     .arg(formatName(serial)));
    return EXIT_GOOD;
}

int scan(const ScanOptions &options)
{
    const QVector<Tag> tags = probes(options);
    Enquiry enquiry(options.line, tags);
    int exitCode = enquiry.open();
    if (exitCode != EXIT_GOOD)
        return exitCode;
    ProgressBar bar(tags.size());
    int answers = 0;
    int asked = 0;
    for (; asked < tags.size() && !outputFailed(); ++asked) {
        bar.show(asked, QStringLiteral("station %1").arg(tags.at(asked).station));
        RequestOutcome outcome;
        if (!enquiry.read(asked, &outcome)) {
            bar.clear();
            exitCode = enquiry.reportStop();
            break;
        }
        bar.clear();
        answers += outcome.stationAnswered() ? 1 : 0;
        printStation(tags.at(asked), outcome, options.line.json);
        reportDoubt(tags.at(asked), outcome);
    }
    printSummary(answers, asked, tags.size(), options.line.json);
    return exitCode == EXIT_GOOD && answers == 0 ? EXIT_NO_ANSWER : exitCode;
}

// Reads "5" or "1-32".
bool readRange(const QString &text, ScanOptions *options)
{
    static const QRegularExpression form(QStringLiteral("\\A([0-9]{1,3})(?:-([0-9]{1,3}))?\\z"));
    const QRegularExpressionMatch match = form.match(text);
    options->first = match.captured(1).toInt();
    options->last = match.captured(2).isEmpty() ? options->first : match.captured(2).toInt();
    if (match.hasMatch() && options->first <= options->last && options->last <= 255)
        return true;
    printError(
        QStringLiteral("--stations: \"%1\" is not FIRST-LAST or one station, within 0 to 255")
            .arg(text));
    return false;
}

bool readProbe(const QCommandLineParser &parser, Tag *probe)
{
    if (!readArea(parser.value(QStringLiteral("area")), &probe->area, QStringLiteral("--area: ")))
        return false;
    probe->address = probe->area == Area::C ? QStringLiteral("0.0.0.0") : QStringLiteral("0.0.0");
    if (parser.isSet(QStringLiteral("address")))
        probe->address = parser.value(QStringLiteral("address"));
    TagAddress address;
    const QString error = parseTagAddress(probe->area, probe->address, &address);
    if (!error.isEmpty())
        printError(QStringLiteral("--address: %1").arg(error));
    return error.isEmpty();
}

void addOptions(QCommandLineParser *parser)
{
    parser->addOption({QStringLiteral("stations"),
                       QStringLiteral("Stations to ask, within 0 to 255, or a single one "
                                      "(default: 1-32)."),
                       QStringLiteral("FIRST[-LAST]"), QStringLiteral("1-32")});
    parser->addOption({QStringLiteral("area"),
                       QStringLiteral("Area of the address that is read: X, D or C (default: D)."),
                       QStringLiteral("AREA"), QStringLiteral("D")});
    parser->addOption({QStringLiteral("address"),
                       QStringLiteral("Address that each station is asked for. One that it refuses "
                                      "will do: it answers all the same (default: 0.0.0, in area C "
                                      "0.0.0.0)."),
                       QStringLiteral("ADDRESS")});
    parser->addOption({QStringLiteral("find"),
                       QStringLiteral("First find out speed and format of a serial line: try all "
                                      "usual ones, or those left open by --baud or --format, until "
                                      "a station answers.")});
    addLineOptions(parser, 0);
}

bool readSearch(const QCommandLineParser &parser, ScanOptions *options)
{
    if (!parser.isSet(QStringLiteral("find")))
        return true;
    if (options->line.isTcp)
        printError(QStringLiteral("--find does not go with --tcp: speed and format are the "
                                  "device server's"));
    else
        options->search = settingsToTry(options->line.serial, parser.isSet(QStringLiteral("baud")),
                                        parser.isSet(QStringLiteral("format")));
    return !options->line.isTcp;
}

} // namespace

int runScan(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Asks one station after the other for a value and tells which of them answer, and how "
        "fast. The exit status is 0 if any does."));
    addOptions(&parser);
    int exitCode = EXIT_GOOD;
    if (parseOptions(&parser, QStringLiteral("scan"), arguments, &exitCode))
        return exitCode;
    ScanOptions options;
    if (!noArguments(parser, QStringLiteral("scan")) ||
        !readRange(parser.value(QStringLiteral("stations")), &options) ||
        !readProbe(parser, &options.probe) || !readLineOptions(parser, &options.line) ||
        !readSearch(parser, &options))
        return EXIT_USAGE;
    if (!options.search.isEmpty())
        exitCode = find(&options);
    if (exitCode != EXIT_GOOD)
        return exitCode;
    return scan(options);
}

} // namespace kvt
