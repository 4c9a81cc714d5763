// Long runs of the rig: each proof prints a line of figures; the exit status is 0 only if all hold.
#include "rig/long_run.h"
#include "rig/proofs.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QTextStream>

namespace
{

using Proof = kvt::ProofResult (*)(const kvt::ProofRun &);

struct Step {
    Proof proof;
    qint64 count;
    qint64 quickCount;
};

kvt::ProofResult misattribution(const kvt::ProofRun &run)
{
    return kvt::proveNoMisattribution(run);
}

kvt::ProofResult noTornValues(const kvt::ProofRun &run)
{
    return kvt::proveNothingIsTorn(run);
}

const Step STEPS[] = {
    {noTornValues, 1000000, 20000},
    {misattribution, 1000000, 50000},
    {kvt::proveDeadStationCostsLittle, 3600, 600},
    {kvt::proveWritesAreAccountedFor, 100000, 5000},
    {kvt::proveLineIsUsed, 600, 60},
};

bool report(QTextStream &out, const kvt::ProofResult &result)
{
    out << (result.held ? "ok      " : "FAILED  ") << result.text << '\n';
    out.flush();
    return result.held;
}

bool runAll(kvt::ProofRun run, bool quick, QTextStream &out)
{
    bool held = true;
    for (const Step &step : STEPS) {
        run.count = quick ? step.quickCount : step.count;
        held = report(out, step.proof(run)) && held;
    }
    return held;
}

// What the silence after a failed attempt is worth: shorter ones against replies that come late.
void compareQuietTimes(kvt::ProofRun run, QTextStream &out)
{
    run.count = 100000;
    for (const int latest : {150, 190, 300}) {
        for (const int quiet : {0, 25, 50, 100, 200}) {
            const kvt::QuietTrial trial = {quiet, latest};
            out << "silence " << quiet << " % of the time-out, late replies up to " << latest
                << " %: " << kvt::proveNoMisattribution(run, trial).text << '\n';
            out.flush();
        }
    }
}

// The proof must be able to fail.
bool proveTearing(const kvt::ProofRun &run, QTextStream &out)
{
    const bool held = report(out, kvt::proveNothingIsTorn(run));
    const kvt::ProofResult accepted = kvt::proveNothingIsTorn(run, true);
    out << (accepted.held ? "FAILED  " : "ok      ") << accepted.text << '\n';
    return held && !accepted.held;
}

bool runDays(const kvt::ProofRun &proof, int days, bool paced, QTextStream &out)
{
    kvt::LongRun run;
    run.driverPath = proof.driverPath;
    run.seed = proof.seed;
    run.days = days;
    run.paced = paced;
    return report(out, kvt::proveLongLife(run, [&](const QString &day) {
                      out << day << '\n';
                      out.flush();
                  }));
}

void addOptions(QCommandLineParser *parser)
{
    parser->setApplicationDescription(QStringLiteral(
        "Long runs of host and driver against the simulated PLC on a virtual clock."));
    parser->addHelpOption();
    parser->addOption({QStringLiteral("quick"), QStringLiteral("Shorter runs, under a minute.")});
    parser->addOption({QStringLiteral("seed"), QStringLiteral("Seed of the runs (default 1)."),
                       QStringLiteral("number"), QStringLiteral("1")});
    parser->addOption({QStringLiteral("quiet-times"),
                       QStringLiteral("Compare silences after a failed attempt instead.")});
    parser->addOption({QStringLiteral("days"),
                       QStringLiteral("Days of a line's life instead, 1 to 3650."),
                       QStringLiteral("number"), QStringLiteral("0")});
    parser->addOption({QStringLiteral("torn"),
                       QStringLiteral("So many readings of values of several words instead, 1000 "
                                      "or more: first as delivered, then with torn=accept, which "
                                      "must show some that never were."),
                       QStringLiteral("number"), QStringLiteral("0")});
    parser->addOption({QStringLiteral("unpaced"),
                       QStringLiteral("With --days: the line hands bytes over at once.")});
}

int complain(const char *text)
{
    QTextStream(stderr) << "kvt_soak: " << text << '\n';
    return 2;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    addOptions(&parser);
    parser.process(app);

    QTextStream out(stdout);
    bool isNumber = false;
    kvt::ProofRun run;
    run.driverPath = QStringLiteral(KVT_LIBRARY);
    run.seed = parser.value(QStringLiteral("seed")).toULongLong(&isNumber);
    if (!isNumber || !parser.positionalArguments().isEmpty())
        return complain("--seed takes a whole number, and there are no arguments");
    const int days = parser.value(QStringLiteral("days")).toInt(&isNumber);
    if (!isNumber || days < 0 || days > 3650)
        return complain("--days takes a number from 1 to 3650");
    run.count = parser.value(QStringLiteral("torn")).toLongLong(&isNumber);
    if (!isNumber || (parser.isSet(QStringLiteral("torn")) && run.count < 1000))
        return complain("--torn takes a number from 1000 on");
    if (run.count > 0)
        return proveTearing(run, out) ? 0 : 1;
    if (days > 0)
        return runDays(run, days, !parser.isSet(QStringLiteral("unpaced")), out) ? 0 : 1;
    if (parser.isSet(QStringLiteral("quiet-times"))) {
        compareQuietTimes(run, out);
        return 0;
    }
    return runAll(run, parser.isSet(QStringLiteral("quick")), out) ? 0 : 1;
}
