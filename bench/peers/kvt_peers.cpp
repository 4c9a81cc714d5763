// What an exchange costs the host, beside other masters on the same kind of line.
//
//   kvt_peers compare [OPTION...]             every master at every speed, in turn
//     --speeds LIST  baud rates, 0 for a line that runs free; 0,9600,38400,115200
//     --rounds N     of every master at every speed; 5
//     --seconds S    for each, up to 200; 1
//     --csv FILE     writes the figures of every round there
//   kvt_peers once MASTER COUNT [COMMAND...]  COUNT transactions at full speed, run by COMMAND
// It starts itself as "kvt_peers master ..." and "kvt_peers slave ...".
#include "bench/peers/comparison.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>

#include <cstdio>

namespace
{

using namespace kvt;

constexpr qint64 LONGEST_RUN_ns = 200000000000; // well before a run counts as hung

int usage()
{
    std::fputs("usage: kvt_peers compare [--speeds LIST] [--rounds N] [--seconds S] [--csv FILE]\n"
               "       kvt_peers once floor|host|libmodbus|qt COUNT [COMMAND...]\n",
               stderr);
    return 2;
}

int failed(const QString &error)
{
    std::fprintf(stderr, "kvt_peers: %s\n", qPrintable(error));
    return 1;
}

// False when a word is no number.
bool readNumbers(const QString &text, QVector<int> *numbers)
{
    numbers->clear();
    for (const QString &word : text.split(QLatin1Char(','))) {
        bool isNumber = false;
        numbers->append(word.toInt(&isNumber));
        if (!isNumber || numbers->last() < 0)
            return false;
    }
    return true;
}

// False when the options make no sense.
bool readOptions(QCommandLineParser *parser, const QStringList &arguments,
                 ComparisonSettings *settings)
{
    const QString speeds = QStringLiteral("speeds");
    const QString rounds = QStringLiteral("rounds");
    const QString time = QStringLiteral("seconds");
    parser->addOptions({{speeds, QString(), speeds, QStringLiteral("0,9600,38400,115200")},
                        {rounds, QString(), rounds, QStringLiteral("5")},
                        {time, QString(), time, QStringLiteral("1")},
                        {QStringLiteral("csv"), QString(), QStringLiteral("file")}});
    if (!parser->parse(arguments) || parser->positionalArguments().size() != 1)
        return false;
    settings->rounds = parser->value(rounds).toInt();
    settings->run_ns = static_cast<qint64>(1e9 * parser->value(time).toDouble());
    return readNumbers(parser->value(speeds), &settings->speeds) && settings->rounds > 0 &&
           settings->run_ns > 0 && settings->run_ns <= LONGEST_RUN_ns;
}

int compare(const QStringList &arguments)
{
    QCommandLineParser parser;
    ComparisonSettings settings;
    if (!readOptions(&parser, arguments, &settings))
        return usage();
    Comparison comparison;
    QString error;
    if (!runComparison(settings, &comparison, &error))
        return failed(error);
    std::fputs(markdownTable(comparison).toUtf8().constData(), stdout);
    if (!parser.isSet(QStringLiteral("csv")))
        return 0;
    QFile file(parser.value(QStringLiteral("csv")));
    const QByteArray csv = csvTable(comparison).toUtf8();
    if (!file.open(QIODevice::WriteOnly) || file.write(csv) != csv.size())
        return failed(file.errorString());
    return 0;
}

int once(const QStringList &arguments)
{
    TrialSettings settings;
    settings.master = masterNamed(arguments.value(0));
    settings.length.count = arguments.value(1).toInt();
    settings.wrapper = arguments.mid(2);
    if (settings.master == nullptr || settings.length.count < 2)
        return usage();
    TrialResult result;
    QString error;
    return runTrial(settings, &result, &error) ? 0 : failed(error);
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const QString mode = arguments.value(1);
    if (mode == QLatin1String("compare"))
        return compare(arguments);
    if (mode == QLatin1String("once"))
        return once(arguments.mid(2));
    if (mode == QLatin1String("master"))
        return masterProcess(arguments.mid(2));
    if (mode == QLatin1String("slave"))
        return slaveProcess(arguments.mid(2));
    return usage();
}
