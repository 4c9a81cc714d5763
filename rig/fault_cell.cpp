#include "rig/fault_cell.h"

#include "driver/records.h"
#include "rig/fault_injector.h"
#include "rig/plant.h"

#include <algorithm>

namespace kvt
{

namespace
{

constexpr int BAUD = 38400;
constexpr qint64 TURNAROUND_ns = milliseconds(4);
constexpr qint64 PAUSE_OF_USER_ns = milliseconds(30); // between two bursts of writes
constexpr qint64 SOUND_ns = seconds(2);               // at the end
constexpr qint64 LONGEST_RUN_ns = seconds(1200);

// Commands (the first part of an address) of the tags that a kind of request is made to.
constexpr int READ_D = 40;
constexpr int WRITE_D = 41;
constexpr int ONCE_D = 42;
constexpr int READ_X = 48;
constexpr int WRITE_X = 49;
constexpr int READ_C = 96;
constexpr int COMMAND = 18;

QString wordAddress(int command, int index)
{
    return QStringLiteral("%1.%2.0").arg(command).arg(index);
}

// Two stations, each with several tags of equal length and some of other lengths.
QVector<Tag> mixedTags()
{
    QVector<Tag> tags;
    for (const int station : {1, 2}) {
        for (int i = 0; i < 3; ++i) {
            tags.append(plantTag(Area::D, station, wordAddress(READ_D, i)));
            tags.append(plantTag(Area::X, station, wordAddress(READ_X, i)));
        }
        for (int i = 0; i < 2; ++i)
            tags.append(plantTag(Area::D, station, wordAddress(WRITE_D, i)));
        tags.append(plantTag(Area::X, station, wordAddress(WRITE_X, 0)));
        tags.append(plantTag(Area::D, station, wordAddress(ONCE_D, 0)));
        for (const int element : {0, 69})
            tags.append(
                plantTag(Area::C, station, QStringLiteral("%1.0.0.%2").arg(READ_C).arg(element)));
        tags.append(plantTag(Area::D, station, wordAddress(COMMAND, 1)));
    }
    return tags;
}

QVector<Tag> uniformTags()
{
    QVector<Tag> tags;
    for (int i = 0; i < 6; ++i)
        tags.append(plantTag(Area::D, 1, wordAddress(READ_D, i)));
    return tags;
}

bool isRemote(RequestOfCell request)
{
    return request == RequestOfCell::RemoteRead || request == RequestOfCell::RemoteWrite;
}

int commandOf(RequestOfCell request)
{
    switch (request) {
    case RequestOfCell::ReadX:
        return READ_X;
    case RequestOfCell::ReadD:
    case RequestOfCell::RemoteRead:
        return READ_D;
    case RequestOfCell::ReadC:
        return READ_C;
    case RequestOfCell::OnceRead:
        return ONCE_D;
    case RequestOfCell::WriteX:
        return WRITE_X;
    case RequestOfCell::WriteD:
    case RequestOfCell::RemoteWrite:
        return WRITE_D;
    case RequestOfCell::Command:
        return COMMAND;
    }
    return 0;
}

bool isWrite(RequestOfCell request)
{
    return request == RequestOfCell::WriteX || request == RequestOfCell::WriteD ||
           request == RequestOfCell::Command || request == RequestOfCell::RemoteWrite;
}

int replyLength(RequestOfCell request)
{
    if (request == RequestOfCell::ReadC)
        return 144;
    return request == RequestOfCell::ReadX || isWrite(request) ? 6 : 8;
}

// Text requests by command and length; envelopes by what they do.
bool isMeant(RequestOfCell request, const QByteArray &frame)
{
    if (isRemote(request))
        return frame.size() > 6 && (frame.at(2) == 1) == isWrite(request) && frame.at(6) == 1;
    const int lengths[] = {8, 8, 8, 8, 10, 12, 8, 0, 0};
    return frame.size() == lengths[static_cast<int>(request)] &&
           frame.mid(3, 2).toInt(nullptr, 16) == commandOf(request) &&
           (request != RequestOfCell::Command || frame.mid(5, 2) == "11");
}

RigSettings rigSettings(const FaultCell &cell, const QString &driverPath, quint64 seed)
{
    RigSettings settings;
    settings.driverPath = driverPath;
    settings.tags = faultsOfLine().at(cell.fault).uniform ? uniformTags() : mixedTags();
    settings.baud = cell.paced ? BAUD : 0;
    settings.latency_ns = settings.session.engine.latency_ns;
    settings.seed = seed;
    settings.plc.turnaround_ns = TURNAROUND_ns;
    settings.plc.signalPlan.all = SignalKind::Serial;
    EngineSettings &engine = settings.session.engine;
    engine.remoteMode = isRemote(cell.request);
    if (engine.remoteMode)
        settings.plc.mode = FrameFinder::Mode::Envelope;
    engine.confirm = cell.settings == CellSettings::Confirm;
    if (cell.settings == CellSettings::Off)
        engine.replyChecking = ReplyChecking::Off;
    else if (cell.settings == CellSettings::Count)
        engine.replyChecking = ReplyChecking::Count;
    else if (cell.settings == CellSettings::Refuse)
        engine.replyChecking = ReplyChecking::Refuse;
    return settings;
}

// Requests writes and one-time reads, of the kind of the cell above all.
class User
{
public:
    User(Rig *rig, CellWitness *witness, RequestOfCell request) : rig_(rig), witness_(witness)
    {
        const QVector<Tag> &tags = rig->session().tags();
        const int command = isWrite(request) ? commandOf(request) : WRITE_D;
        for (int i = 0; i < tags.size(); ++i) {
            const int first = tags.at(i).address.section(QLatin1Char('.'), 0, 0).toInt();
            if (first == command && (tags.at(i).station == 1 || command != COMMAND))
                toWrite_.append(i);
            if (first == ONCE_D)
                toRead_.append(i);
        }
        pause_ns_ = isWrite(request) ? PAUSE_OF_USER_ns : 8 * PAUSE_OF_USER_ns;
    }

    void act()
    {
        const qint64 now_ns = rig_->line().now_ns();
        if (now_ns < next_ns_ || witness_->openWrites() > 0)
            return;
        next_ns_ = now_ns + pause_ns_;
        for (const int tag : std::as_const(toWrite_))
            write(tag);
        for (const int tag : std::as_const(toRead_))
            rig_->session().readOnce(tag);
    }

private:
    void write(int tag)
    {
        ++value_;
        QByteArray bytes(1, static_cast<char>(value_ & 0xFF));
        if (rig_->session().tags().at(tag).area == Area::D)
            bytes.append(static_cast<char>(value_ >> 8));
        witness_->requested(rig_->session().write(tag, bytes));
    }

    Rig *rig_;
    CellWitness *witness_;
    QVector<int> toWrite_;
    QVector<int> toRead_;
    qint64 pause_ns_ = 0;
    qint64 next_ns_ = milliseconds(200);
    int value_ = 0;
};

void run(Rig *rig, FaultInjector *injector, CellWitness *witness, RequestOfCell request)
{
    User user(rig, witness, request);
    qint64 struckAt_ns = 0;
    VirtualLine &line = rig->line();
    qint64 end_ns = LONGEST_RUN_ns;
    while (line.now_ns() < end_ns && line.step()) {
        if (injector->struckAt_ns() != struckAt_ns) {
            struckAt_ns = injector->struckAt_ns();
            witness->struck(struckAt_ns, injector->phase() != FaultInjector::Phase::Always,
                            injector->goesOn());
        }
        witness->expect(injector->phase() != FaultInjector::Phase::Single,
                        injector->phase() == FaultInjector::Phase::Second);
        witness->look();
        user.act();
        if (injector->phase() == FaultInjector::Phase::Over && witness->isRecovered() &&
            end_ns == LONGEST_RUN_ns)
            end_ns = line.now_ns() + SOUND_ns;
    }
    rig->session().stop();
}

} // namespace

QString requestName(RequestOfCell request)
{
    constexpr const char *NAMES[] = {"read X",  "read D",  "read C",      "once read",   "write X",
                                     "write D", "command", "remote read", "remote write"};
    return QLatin1String(NAMES[static_cast<int>(request)]);
}

QString settingsName(CellSettings settings)
{
    constexpr const char *NAMES[] = {"default", "confirm", "off", "count", "refuse"};
    return QLatin1String(NAMES[static_cast<int>(settings)]);
}

CellResult runFaultCell(const FaultCell &cell, const QString &driverPath, quint64 seed)
{
    CellResult result;
    result.cell = cell;
    RigSettings settings = rigSettings(cell, driverPath, seed);
    const QString command = QString::number(commandOf(cell.request)) + QLatin1Char('.');
    CellWitness witness(settings.tags,
                        [&](const Tag &tag) { return tag.address.startsWith(command); });
    settings.session.engine.tap = witness.tap();
    const std::unique_ptr<Rig> rig = Rig::make(settings, &witness, &result.error);
    if (!rig)
        return result;
    witness.watch(&rig->session(), &rig->line());

    InjectorSettings injection;
    injection.fault = faultsOfLine().at(cell.fault);
    injection.filter = [&](const QByteArray &frame) { return isMeant(cell.request, frame); };
    injection.log = [&](const QByteArray &request, const QByteArray &reply) {
        witness.answered(request, reply);
    };
    injection.engine = rig->session().engine().settings();
    injection.replyLength = replyLength(cell.request);
    injection.seed = seed;
    FaultInjector injector(injection);
    rig->line().setFault(&injector);
    run(rig.get(), &injector, &witness, cell.request);
    result.strikes = injector.strikes();
    witness.finish();
    result.findings = witness.findings();
    if (result.findings.values == 0 || injector.phase() != FaultInjector::Phase::Over)
        result.error = QStringLiteral("the run did not come to its end");
    rig->line().setFault(nullptr);
    return result;
}

} // namespace kvt
