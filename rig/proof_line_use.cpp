#include "rig/plant.h"
#include "rig/proofs.h"
#include "rig/rig.h"

namespace kvt
{

namespace
{

double utilisationAt(const ProofRun &run, int baud, QString *error)
{
    NoEvents events;
    RigSettings settings;
    settings.driverPath = run.driverPath;
    settings.tags = makePlant({1, 100, 0, 0});
    settings.baud = baud;
    settings.seed = run.seed;
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
        const double use = utilisationAt(run, baud, &error);
        if (use < 0.99)
            result.held = false;
        texts.append(QStringLiteral("%1 %2 %").arg(baud).arg(100 * use, 0, 'f', 3));
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
