// kvt read: values, once.
#include "apps/kvt/commands.h"
#include "apps/kvt/console.h"
#include "apps/kvt/enquiry.h"
#include "apps/kvt/exit_codes.h"
#include "apps/kvt/options.h"
#include "apps/kvt/report_json.h"
#include "apps/kvt/request_report.h"
#include "apps/kvt/target.h"
#include "apps/kvt/value_text.h"

#include <QJsonArray>

namespace kvt
{

namespace
{

void printRead(const Tag &tag, const RequestOutcome &outcome)
{
    if (outcome.good)
        printOut(
            QStringLiteral("%1: %2, %3\n")
                .arg(placeText(tag), ValueTexts({tag}).text(0, outcome.value), replyText(outcome)));
    else
        printError(failureText(tag, outcome));
}

// Those that were never asked for are named too.
void printJson(const QVector<Tag> &tags, const QVector<RequestOutcome> &outcomes, bool complete)
{
    QJsonArray reads;
    for (int tag = 0; tag < tags.size(); ++tag)
        reads.append(readToJson(tags.at(tag), outcomes.at(tag)));
    printOut(jsonLine({{QStringLiteral("reads"), reads},
                       {QStringLiteral("summary"), requestSummary(outcomes, complete)}}));
}

int readAll(const LineOptions &options, const QVector<Tag> &tags)
{
    Enquiry enquiry(options, tags);
    int exitCode = enquiry.open();
    if (exitCode != EXIT_GOOD && exitCode != EXIT_NO_ANSWER)
        return exitCode;
    QVector<RequestOutcome> outcomes(tags.size());
    bool complete = exitCode == EXIT_GOOD;
    for (int tag = 0; tag < tags.size() && complete && !outputFailed(); ++tag) {
        RequestOutcome &outcome = outcomes[tag];
        complete = enquiry.read(tag, &outcome);
        if (!complete)
            exitCode = enquiry.reportStop();
        else if (!outcome.good)
            exitCode = EXIT_NO_ANSWER;
        if (complete && !options.json)
            printRead(tags.at(tag), outcome);
        reportDoubt(tags.at(tag), outcome);
    }
    if (options.json)
        printJson(tags, outcomes, complete);
    return exitCode;
}

} // namespace

int runRead(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Reads each address once and prints its value and the time until its reply. "
                       "The exit status is 0 if every one could be read."));
    parser.addPositionalArgument(QStringLiteral("AREA"), QStringLiteral("X, D or C."));
    parser.addPositionalArgument(
        QStringLiteral("ADDRESS..."),
        QStringLiteral("Decimal parts a.b.c, in area C a.b.c.d, e.g. 5.2.1. With --tags, names "
                       "of tags in place of area and addresses."));
    addTargetOptions(&parser, QStringLiteral("How values are shown"));
    addLineOptions(&parser);
    int exitCode = EXIT_GOOD;
    if (parseOptions(&parser, QStringLiteral("read"), arguments, &exitCode))
        return exitCode;
    LineOptions options;
    QVector<Tag> tags;
    if (!readTargets(parser, parser.positionalArguments(), &tags) ||
        !readLineOptions(parser, &options))
        return EXIT_USAGE;
    return readAll(options, tags);
}

} // namespace kvt
