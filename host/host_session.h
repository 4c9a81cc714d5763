// The host without its line: driver, engine, stations, writes, values and statistics together.
#ifndef KVT_HOST_HOST_SESSION_H
#define KVT_HOST_HOST_SESSION_H

#include "host/alarm_board.h"
#include "host/class_reader.h"
#include "host/driver_setup.h"
#include "host/exchange_engine.h"
#include "host/host_events.h"
#include "host/once_reads.h"
#include "host/parted_writes.h"
#include "host/session_settings.h"
#include "host/statistics.h"
#include "host/tag_index.h"
#include "host/unproven.h"
#include "host/value_assembly.h"

#include <QSet>

#include <atomic>
#include <mutex>
#include <vector>

namespace kvt
{

/// A host's whole work but input and output. Whoever runs the line drives `engine()`; everything
/// else follows from that. The engine's calls belong to one polling thread; the calls marked so
/// may come from any thread.
class HostSession final : private ExchangeObserver
{
public:
    /// Sets the driver up and hands it the tags, which must be those of a tag list without errors
    /// and pass `obstacles`. The driver is freshly loaded and stays loaded while the session
    /// lives; `events`, not null, lives as long. Polling thread, or before it runs.
    HostSession(const DriverApi &api, const SessionSettings &settings, const QVector<Tag> &tags,
                HostEvents *events);
    HostSession(const HostSession &) = delete;
    HostSession &operator=(const HostSession &) = delete;
    /// What keeps these tags from being polled together, one text each; empty when nothing does.
    static QStringList obstacles(const QVector<Tag> &tags) { return DriverSetup::obstacles(tags); }

    /// The engine to be driven. Polling thread.
    ExchangeEngine &engine() { return engine_; }

    /// Why the line is down, for the event of the engine's next `lineDown`. Polling thread.
    void setLineReason(const QString &reason) { lineReason_ = reason; }

    /// Gives every write that has not ended its final state. Polling thread, at the end.
    void stop();

    /// Requests a write to a tag. `bytes` are those of its elements at rising addresses, two each,
    /// the least significant first; of one element of area X one will do; of a bit they are 0 or
    /// else. Elements are written one by one, in the tag's order, each once the one before has been
    /// acknowledged; a bit with the rest of its element as it is read first. Returns the write's
    /// id, above 0; its life is reported as events. It reaches the driver before the next request
    /// is chosen, which the engine does as soon as it is woken up. Any thread.
    int write(int tag, const QByteArray &bytes);

    /// Requests a reading of a tag ahead of its turn, with as many requests as its value takes.
    /// Returns its id, above 0; its end is reported as an event. Any thread.
    int readOnce(int tag);

    /// Every tag's value at `now_ns`, in the order of the tags. Any thread.
    QVector<TagValue> values(qint64 now_ns) const;

    /// Every tag's alarm, none where the list says none. Any thread.
    QVector<std::optional<AlarmStatus>> alarms() const;

    /// Somebody has seen to a tag's alarm, puts it aside until `until_ns`
    /// (AlarmMachine::NO_DEADLINE: until that is taken back), or takes that back. False for a tag
    /// without alarm. The change is told before the next request. Any thread.
    bool acknowledgeAlarm(int tag, qint64 now_ns);
    bool shelveAlarm(int tag, qint64 until_ns, qint64 now_ns);
    bool unshelveAlarm(int tag, qint64 now_ns);
    /// A copy. Any thread.
    Statistics statistics() const;

    const QVector<Tag> &tags() const { return tags_; }

private:
    struct Command {
        int id = 0;
        int tag = 0;
        bool isWrite = false;
        QByteArray bytes;
    };

    struct AskedRead {
        int id = 0;
        int tag = 0;
    };

    int post(Command command);
    bool isTag(int tag) const { return tag >= 0 && tag < tags_.size(); }
    bool isBit(int tag) const { return isTag(tag) && tags_.at(tag).form.type == ValueType::Bit; }

    void beforeRequest(qint64 now_ns) override;
    qint64 requestDue_ns() const override { return classes_.due_ns(); }
    void requestChosen(const Request &request) override;
    void attemptEnded(const Attempt &attempt) override;
    void bytesDropped(DroppedBytes kind, int station, int count) override;
    void checkpointPassed(qint64 began_ns) override;
    void checkpointVoid() override;
    void outOfStep(qint64 provedUntil_ns) override;
    void withdraw(qint64 provedUntil_ns);
    void lineChanged(bool up, qint64 now_ns) override;
    void switchOn(int station, qint64 now_ns);
    void runCommands();
    void run(const Command &command);
    void queueOnceRead(const Command &command);
    bool queueRead(int id, int tag, int number);
    void onceReadFailed(int id, int tag);

    bool isWritable(int tag, const QByteArray &bytes) const;
    PartedWrite partsOf(const Command &command) const;
    bool mustWait(const Command &command) const;
    void runWaiting();
    void startWrite(const Command &command);
    WriteReason queueElement(int id, int tag, int number, QByteArray bytes);
    void writePart(int id);
    void endReadToWrite(int id, int tag, const Attempt &attempt);
    void writeBit(int id, const Reading &reading);
    void onWriteChanged(const WriteReport &report);
    void tellWrite(const WriteReport &report);

    void requestEnded(const Attempt &attempt);
    void requestFailed(const Attempt &attempt);
    void storeReadings(const ReadKey &key, const Attempt &attempt);
    void storeReading(int cell, const Attempt &attempt);
    void publish(int cell, const Reading &reading);
    void holdBack(int cell, const Reading &reading);
    void readingLost(int cell);
    void followAssembly();
    void readCell(int cell);
    void beginAskedRead(const AskedRead &read);
    void endAskedReads(int tag, bool good);
    void readingsFailed(const QVector<int> &cells);
    void endWrite(const Attempt &attempt);
    WriteReport verdictOn(const Attempt &attempt) const;
    void endOnceRead(int tag, const Attempt &attempt);
    void waitForProof(int id, int tag);
    void endClassRead(const Attempt &attempt);
    bool needsProof() const
    {
        return settings_.engine.confirm || settings_.engine.checkpointShare > 0;
    }
    void setLimits();
    TagValue valueOf(int tag, qint64 now_ns) const;
    void tellRead(int tag, const Reading &reading);
    void tellTorn(int tag);
    void followAlarms(qint64 now_ns);
    void loseAlarms(qint64 now_ns);
    void tellAlarms();
    void prove(const Unproven &entry);
    quint32 writesTo(int cell) const;
    bool fetch(int cell, quint64 *raw);
    bool isProved(int tag) const;
    void giveUp(const Unproven &entry, WriteReason reason);
    void giveUpUnproven(WriteReason reason);
    void tellDoubt(int station);
    void countStationSwitch(int station, bool on);

    DriverApi api_;
    SessionSettings settings_;
    QVector<Tag> tags_;
    HostEvents *events_;
    TagIndex index_;
    DriverSetup setup_;
    StationSupervisor supervisor_;
    WriteTracker writes_;
    OnceReads onceReads_;
    ClassReader classes_;
    ExchangeEngine engine_;
    QString lineReason_;
    std::vector<Unproven> unproven_;    // in the order of their replies
    std::vector<AskedRead> askedReads_; // of tags that take several requests
    PartedWrites partedWrites_;
    QHash<int, int> begunWrites_;    // those that have not ended, with their tags
    QVector<Command> waitingWrites_; // for others that have begun to end
    bool isStopping_ = false;
    qint64 replies_ = 0;                  // good ones
    std::vector<AlarmEvent> alarmEvents_; // on their way to the application
    QVector<qint64> staleAfter_ns_;       // of each tag
    QSet<int> doubtfulStations_;          // that have been reported
    QByteArray reading_{2, '\0'}; // what the driver fills in, kept so that none is made for each

    std::atomic<bool> haveCommands_{false}; // spares the lock ahead of most requests

    mutable std::mutex mutex_; // the members below; never held while calling out
    ValueTable values_;
    ValueAssembly assembly_; // but for its events and wanted cells, which are the polling thread's
    AlarmBoard alarms_;      // empty or not is known without the lock
    Statistics statistics_;
    QVector<Command> commands_;
    int lastId_;
};

} // namespace kvt

#endif
