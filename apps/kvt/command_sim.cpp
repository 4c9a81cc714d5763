// kvt sim: the simulated PLC on a pseudo-terminal, a serial port or TCP.
#include "apps/kvt/commands.h"
#include "apps/kvt/console.h"
#include "apps/kvt/exit_codes.h"
#include "apps/kvt/options.h"
#include "apps/kvt/run_end.h"
#include "apps/kvt/sim_options.h"
#include "apps/kvt/sim_report.h"
#include "apps/kvt/stop_signal.h"
#include "simulator/plc_runner.h"
#include "simulator/pty_port.h"
#include "simulator/serial_port.h"
#include "simulator/tcp_port.h"

#include <QCoreApplication>

#include <memory>

namespace kvt
{

namespace
{

std::unique_ptr<Port> makePort(const SimOptions &options)
{
    switch (options.line) {
    case SimOptions::Line::Serial:
        return std::make_unique<SerialPort>(options.device, options.serial);
    case SimOptions::Line::Tcp:
        return std::make_unique<TcpPort>(options.port, options.address);
    case SimOptions::Line::Pty:
        break;
    }
    return std::make_unique<PtyPort>(options.device);
}

int simulate(SimOptions options)
{
    const StopSignal stopSignal;
    if (options.log)
        options.plc.log = [json = options.json](const Exchange &exchange) {
            printOut(exchangeLine(exchange, json));
        };
    SimulatedPlc plc(options.tags, options.plc, options.seed);
    const std::unique_ptr<Port> port = makePort(options);
    PlcRunner runner(&plc, port.get());
    QString error;
    if (!runner.start(&error)) {
        printError(QStringLiteral("sim: %1").arg(error));
        return EXIT_NO_LINE;
    }
    printOut(lineNameLine(port->name(), options.json));
    quitEventLoopAfter(options.seconds);
    QCoreApplication::exec();
    runner.stop();
    printOut(summaryLine(plc.counters(), options.json));
    return EXIT_GOOD;
}

} // namespace

int runSim(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Simulates a PLC with all its stations on a pseudo-terminal (unless another line is "
        "named). The first line printed is the name under which a host reaches it. Runs until "
        "Ctrl-C and ends with a summary."));
    addSimOptions(&parser);
    int exitCode = EXIT_GOOD;
    if (parseOptions(&parser, QStringLiteral("sim"), arguments, &exitCode))
        return exitCode;
    SimOptions options;
    if (!noArguments(parser, QStringLiteral("sim")) || !readSimOptions(parser, &options))
        return EXIT_USAGE;
    return simulate(options);
}

} // namespace kvt
