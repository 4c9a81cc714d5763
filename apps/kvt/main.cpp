// kvt: the command line. Finds the sub-command and hands it the rest of the line.
#include "apps/kvt/commands.h"
#include "apps/kvt/console.h"
#include "apps/kvt/driver_option.h"
#include "apps/kvt/exit_codes.h"
#include "apps/kvt/options.h"
#include "driver/version.h"

#include <QCoreApplication>

#include <algorithm>
#include <csignal>
#include <iterator>

namespace
{

struct Command {
    const char *name;
    int (*run)(const QStringList &arguments);
    const char *summary;
};

const Command COMMANDS[] = {
    {"demo", kvt::runDemo, "poll a simulated PLC on a pseudo-terminal"},
    {"sim", kvt::runSim, "simulate a PLC on a pseudo-terminal, a serial port or TCP"},
    {"poll", kvt::runPoll, "poll the tags of a list and show their values"},
    {"read", kvt::runRead, "read values once"},
    {"write", kvt::runWrite, "write a value"},
    {"scan", kvt::runScan, "find the stations that answer"},
    {"tune", kvt::runTune, "measure reply times and recommend time-outs"},
    {"plan", kvt::runPlan, "predict the scan time of a tag list"},
    {"tags", kvt::runTags, "check a tag list, or print one to begin with"},
    {"decode", kvt::runDecode, "explain frames or a trace"},
    {"explain", kvt::runExplain, "explain a result code"},
    {"replay", kvt::runReplay, "put a recorded run to the driver again"},
};

QString usage()
{
    QString text = QStringLiteral("Usage: kvt COMMAND [OPTION]...\n\nCommands:\n");
    for (const Command &command : COMMANDS)
        text += QStringLiteral("  %1 %2\n")
                    .arg(QLatin1String(command.name), -8)
                    .arg(QLatin1String(command.summary));
    text += QStringLiteral("  %1 tell the options of a command: kvt help COMMAND\n")
                .arg(QLatin1String("help"), -8);
    text += QStringLiteral("\nManual pages: man kvt, and man kvt-COMMAND of each command. "
                           "docs/kvt.md of the\nsources tells all of it, docs/values.md what a tag "
                           "list says about values.\n");
    return text;
}

QStringList commandNames()
{
    QStringList names(QStringLiteral("help"));
    for (const Command &command : COMMANDS)
        names.append(QLatin1String(command.name));
    return names;
}

// Of this program and of the driver that it would load.
QString versions()
{
    kvt::DriverLibrary library;
    QString error;
    const bool loaded = library.load(kvt::defaultDriverPath(), &error);
    return QStringLiteral("kvt %1\ndriver %2\n")
        .arg(QLatin1String(KVT_VERSION_STRING),
             loaded ? QStringLiteral("%1 %2").arg(library.versionText(), library.file())
                    : QStringLiteral("none: ") + error);
}

int runNamed(const QString &name, const QStringList &arguments)
{
    const auto command =
        std::find_if(std::begin(COMMANDS), std::end(COMMANDS),
                     [&](const Command &c) { return name == QLatin1String(c.name); });
    if (command != std::end(COMMANDS))
        return command->run(arguments);
    kvt::printError(name.isEmpty() ? QStringLiteral("no command given, see kvt --help")
                                   : QStringLiteral("no command \"%1\", see kvt --help%2")
                                         .arg(name, kvt::suggestion(name, commandNames())));
    return kvt::EXIT_USAGE;
}

int runWords(const QStringList &words)
{
    const QString name = words.value(0);
    const bool isHelp = name == QLatin1String("help");
    if (isHelp && words.size() > 1)
        return runNamed(words.at(1), {QStringLiteral("--help")});
    if (isHelp || name == QLatin1String("--help") || name == QLatin1String("-h")) {
        kvt::printOut(usage());
        return kvt::EXIT_GOOD;
    }
    if (name == QLatin1String("--version")) {
        kvt::printOut(versions());
        return kvt::EXIT_GOOD;
    }
    return runNamed(name, words.mid(1));
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("kvt"));
    QCoreApplication::setApplicationVersion(QStringLiteral(KVT_VERSION_STRING));
    // A reader that goes away is an error of writing, after which links and traces are closed.
    (void)std::signal(SIGPIPE, SIG_IGN);
    (void)std::signal(SIGXFSZ, SIG_IGN);
    return kvt::finishOutput(runWords(QCoreApplication::arguments().mid(1)));
}
