// kvt replay: puts a recorded run to the driver again.
#include "apps/kvt/commands.h"
#include "apps/kvt/common/counted.h"
#include "apps/kvt/console.h"
#include "apps/kvt/driver_option.h"
#include "apps/kvt/exit_codes.h"
#include "apps/kvt/options.h"
#include "host/trace_replay.h"

#include <QJsonObject>

namespace kvt
{

namespace
{

QJsonObject resultToJson(const ReplayResult &result)
{
    QJsonObject object{{QStringLiteral("same"), result.difference.isEmpty()},
                       {QStringLiteral("exchanges"), result.exchanges},
                       {QStringLiteral("outcomes_compared"), result.calls},
                       {QStringLiteral("recording_was_cut"), result.isCut}};
    if (!result.difference.isEmpty())
        object.insert(QStringLiteral("difference"), result.difference);
    return {{QStringLiteral("summary"), object}};
}

QString resultText(const ReplayResult &result)
{
    if (!result.difference.isEmpty())
        return result.difference + QLatin1Char('\n');
    return QStringLiteral("%1, %2, no difference%3\n")
        .arg(counted(result.exchanges, "exchange replayed", "exchanges replayed"),
             counted(result.calls, "outcome compared", "outcomes compared"),
             result.isCut ? QStringLiteral(" (up to where the recording has lost records)")
                          : QString());
}

int replay(const QString &path, const QString &driver, bool json)
{
    QString error;
    TraceReader reader;
    if (!reader.open(path, &error)) {
        printError(QStringLiteral("%1: %2").arg(path, error));
        return EXIT_USAGE;
    }
    DriverLibrary library;
    if (!loadDriver(driver, &library))
        return EXIT_USAGE;
    const ReplayResult result = replayTrace(&reader, library.api());
    if (!result.error.isEmpty()) {
        printError(QStringLiteral("%1: %2").arg(path, result.error));
        return EXIT_USAGE;
    }
    printOut(json ? jsonLine(resultToJson(result)) : resultText(result));
    return result.difference.isEmpty() ? EXIT_GOOD : EXIT_NO_ANSWER;
}

} // namespace

int runReplay(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Makes the calls of a trace again, of a freshly loaded driver, and tells the first "
        "difference in outcome. The exit status is 0 if there is none and 1 if there is one."));
    parser.addPositionalArgument(QStringLiteral("FILE"),
                                 QStringLiteral("A trace, as --trace records it."));
    parser.addOption({QStringLiteral("json"), QStringLiteral("Print a JSON object.")});
    parser.addOption(driverOption());
    int exitCode = EXIT_GOOD;
    if (parseOptions(&parser, QStringLiteral("replay"), arguments, &exitCode))
        return exitCode;
    if (parser.positionalArguments().size() != 1) {
        printError(QStringLiteral("replay: name one file, see kvt replay --help"));
        return EXIT_USAGE;
    }
    return replay(parser.positionalArguments().first(), driverPath(parser),
                  parser.isSet(QStringLiteral("json")));
}

} // namespace kvt
