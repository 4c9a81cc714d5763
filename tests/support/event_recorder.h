// Records the events of a host and lets a test wait for what it expects.
#ifndef KVT_TESTS_SUPPORT_EVENT_RECORDER_H
#define KVT_TESTS_SUPPORT_EVENT_RECORDER_H

#include "host/host_events.h"

#include <QMap>
#include <QVector>

#include <chrono>
#include <condition_variable>
#include <mutex>

/// What a host has reported so far.
struct RecordedEvents {
    struct Switch {
        int station;
        bool on;
    };
    struct Reading {
        int tag;
        quint64 raw;
        qint64 at_ns;
    };
    struct OnceRead {
        int id;
        int tag;
        bool good;
    };
    QVector<Switch> switches;
    QVector<kvt::WriteReport> writes;
    QVector<Reading> readings;
    QVector<OnceRead> onceReads;
    QVector<int> suspects;
    QVector<int> doubtfulStations;
    QVector<bool> lineStates;
    QVector<QString> lineReasons;

    /// The states that the write `id` has gone through.
    QVector<kvt::WriteState> statesOf(int id) const
    {
        QVector<kvt::WriteState> states;
        for (const kvt::WriteReport &report : writes)
            if (report.id == id)
                states.append(report.state);
        return states;
    }

    /// The latest report about the write `id`; its id is 0 when there is none.
    kvt::WriteReport lastOf(int id) const
    {
        kvt::WriteReport last;
        for (const kvt::WriteReport &report : writes)
            if (report.id == id)
                last = report;
        return last;
    }

    bool hasEnded(int id) const { return lastOf(id).id == id && lastOf(id).isFinal(); }

    /// Number of readings of a tag.
    int readingsOf(int tag) const
    {
        int count = 0;
        for (const Reading &reading : readings)
            count += reading.tag == tag ? 1 : 0;
        return count;
    }
};

/// Collects the events. Any thread.
class EventRecorder final : public kvt::HostEvents
{
public:
    void stationSwitched(int station, bool on) override
    {
        add([&] { events_.switches.append({station, on}); });
    }
    void writeChanged(const kvt::WriteReport &report) override
    {
        add([&] { events_.writes.append(report); });
    }
    void onceReadEnded(int id, int tag, bool good) override
    {
        add([&] { events_.onceReads.append({id, tag, good}); });
    }
    void lineChanged(bool up, const QString &reason) override
    {
        add([&] {
            events_.lineStates.append(up);
            events_.lineReasons.append(reason);
        });
    }
    void tagRead(int tag, const kvt::Reading &reading) override
    {
        add([&] { events_.readings.append({tag, reading.raw, reading.readAt_ns}); });
    }

    void tagSuspect(int tag) override
    {
        add([&] { events_.suspects.append(tag); });
    }
    void stationDoubtful(int station) override
    {
        add([&] { events_.doubtfulStations.append(station); });
    }

    /// A copy of everything so far.
    RecordedEvents events() const
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        return events_;
    }

    /// Forgets everything so far.
    void clear()
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        events_ = RecordedEvents();
    }

    /// Waits until `condition` of the events holds. Returns false when it never does, which is
    /// given up only after a time that no working host needs.
    template <typename Condition>
    bool waitFor(Condition condition)
    {
        std::unique_lock<std::mutex> lock(mutex_);
        return changed_.wait_for(lock, std::chrono::seconds(60),
                                 [&] { return condition(events_); });
    }

private:
    template <typename Change>
    void add(Change change)
    {
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            change();
        }
        changed_.notify_all();
    }

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    RecordedEvents events_;
};

#endif
