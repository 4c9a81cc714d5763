#include "rig/plant.h"
#include "rig/proofs.h"
#include "rig/rig.h"

namespace kvt
{

namespace
{

double utilisationAt(const ProofRun &run, int baud, bool pauses, QString *error)
{
    HostEvents events;
    RigSettings settings;
    settings.driverPath = run.driverPath;
    settings.tags = makePlant({1, 100, 0, 0});
    settings.baud = baud;
    settings.seed = run.seed;
    if (!pauses)
        settings.session.engine.checkpointShare = 0;
    const std::unique_ptr<Rig> rig = Rig::make(settings, &events, error);
    if (!rig)
        return 0;
    rig->line().runUntil(seconds(run.count));
    return rig->session().statistics().utilisation(rig->line().now_ns(), rig->characterTime_ns());
}

} // namespace

ProofResult proveLineIsUsed(const ProofRun &run)
{
    ProofResult result;
    QString error;
    QStringList texts;
    result.held = true;
    for (const int baud : {9600, 38400, 115200}) {
        const double without = utilisationAt(run, baud, false, &error);
        const double with = utilisationAt(run, baud, true, &error);
        if (without < 0.99 || with < 0.99 * without)
            result.held = false;
        texts.append(QStringLiteral("%1 %2 %, with pauses %3 %")
                         .arg(baud)
                         .arg(100 * without, 0, 'f', 3)
                         .arg(100 * with, 0, 'f', 3));
    }
    result.text = error.isEmpty()
                      ? QStringLiteral("line use: seed %1, %2 s each, no turnaround; %3")
                            .arg(run.seed)
                            .arg(run.count)
                            .arg(texts.join(QStringLiteral(", ")))
                      : error;
    return result;
}

} // namespace kvt
