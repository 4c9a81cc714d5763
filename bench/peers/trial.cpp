#include "bench/peers/trial.h"

#include "bench/peers/pinning.h"
#include "bench/peers/slave.h"

#include <QCoreApplication>
#include <QProcess>

namespace kvt
{

namespace
{

constexpr int FREE_RUNNING_BAUD = 115200; // what the masters are told when there is no pace
constexpr int HANG_ms = 300000;
constexpr qint64 SHORTEST_RTU_SILENCE_ns = 1750000;

qint64 byteTime_ns(int baud)
{
    return baud > 0 ? Q_INT64_C(10000000000) / baud : 0;
}

// Three and a half characters; above 19,200 baud the protocol has a fixed time instead.
qint64 rtuSilence_ns(int baud)
{
    return baud > 19200 ? SHORTEST_RTU_SILENCE_ns : byteTime_ns(baud) * 7 / 2;
}

QStringList lengthArguments(const RunLength &length)
{
    return {QString::number(length.warmUp_ns), QString::number(length.measured_ns),
            QString::number(length.count)};
}

bool startSlave(const TrialSettings &settings, QProcess *slave, QString *device)
{
    const qint64 silence_ns = settings.rtuSilences ? rtuSilence_ns(settings.baud) : 0;
    slave->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    slave->start(QCoreApplication::applicationFilePath(),
                 {QStringLiteral("slave"),
                  QString::number(static_cast<int>(settings.master->protocol)),
                  QString::number(byteTime_ns(settings.baud)), QString::number(silence_ns),
                  QString::number(settings.length.warmUp_ns)});
    while (!slave->canReadLine())
        if (!slave->waitForReadyRead(HANG_ms))
            return false;
    *device = QString::fromLocal8Bit(slave->readLine().trimmed());
    return true;
}

bool runMaster(const TrialSettings &settings, const QString &device, QByteArray *output)
{
    const bool paced = settings.baud > 0;
    QStringList command = settings.wrapper;
    command << QCoreApplication::applicationFilePath() << QStringLiteral("master")
            << QLatin1String(settings.master->name) << device
            << QString::number(paced ? settings.baud : FREE_RUNNING_BAUD)
            << QString::number(paced ? 1 : 0) << lengthArguments(settings.length);
    QProcess master;
    master.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    const QString program = command.takeFirst();
    master.start(program, command);
    if (!master.waitForFinished(HANG_ms))
        return false;
    *output = master.readAllStandardOutput();
    return master.exitStatus() == QProcess::NormalExit && master.exitCode() == 0;
}

double microseconds(const QByteArray &nanoseconds)
{
    return nanoseconds.toDouble() / 1000;
}

bool readResult(const TrialSettings &settings, const QByteArray &ofMaster,
                const QByteArray &ofSlave, TrialResult *result)
{
    const QList<QByteArray> run = ofMaster.trimmed().split(' ');
    const QList<QByteArray> answers = ofSlave.trimmed().split(' ');
    if (run.size() != 5 || answers.size() != 3 || run.at(0).toInt() <= 0)
        return false;
    const double count = run.at(0).toDouble();
    result->transactions = run.at(0).toInt();
    result->perSecond = count * 1e9 / run.at(1).toDouble();
    result->cpu_us = microseconds(run.at(2)) / count;
    result->period_p50_us = microseconds(run.at(3));
    result->period_p99_us = microseconds(run.at(4));
    result->gap_p50_us = microseconds(answers.at(1));
    result->gap_p99_us = microseconds(answers.at(2));
    const auto lineTime_ns = static_cast<double>(
        wireTransaction(settings.master->protocol).bytes() * byteTime_ns(settings.baud));
    result->lineShare = result->perSecond * lineTime_ns / 1e9;
    return true;
}

} // namespace

bool runTrial(const TrialSettings &settings, TrialResult *result, QString *error)
{
    QProcess slave;
    QString device;
    QByteArray output;
    *error = QStringLiteral("%1: the run failed").arg(QLatin1String(settings.master->title));
    // The slave ends once the master has closed the line.
    if (!startSlave(settings, &slave, &device) || !runMaster(settings, device, &output) ||
        !slave.waitForFinished(HANG_ms) || slave.exitCode() != 0 ||
        !readResult(settings, output, slave.readAllStandardOutput(), result))
        return false;
    error->clear();
    return true;
}

int masterProcess(const QStringList &arguments)
{
    const Master *const master = masterNamed(arguments.value(0));
    if (master == nullptr || arguments.size() != 7 || !pinTo(Core::Master))
        return 2;
    MasterLine line;
    line.device = arguments.at(1);
    line.baud = arguments.at(2).toInt();
    line.paced = arguments.at(3).toInt() != 0;
    RunLength length;
    length.warmUp_ns = arguments.at(4).toLongLong();
    length.measured_ns = arguments.at(5).toLongLong();
    length.count = arguments.at(6).toInt();
    Meter meter(length);
    if (!master->run(line, &meter) || !meter.isGood())
        return 1;
    meter.print();
    return 0;
}

int slaveProcess(const QStringList &arguments)
{
    if (arguments.size() != 4 || !pinTo(Core::Slave))
        return 2;
    SlavePace pace;
    pace.byteTime_ns = arguments.at(1).toLongLong();
    pace.silence_ns = arguments.at(2).toLongLong();
    pace.warmUp_ns = arguments.at(3).toLongLong();
    return runSlave(static_cast<WireProtocol>(arguments.at(0).toInt()), pace) ? 0 : 1;
}

} // namespace kvt
