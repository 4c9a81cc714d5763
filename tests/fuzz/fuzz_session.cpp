// A host session on the real driver, with any settings, whose line does anything at any time:
// bytes in any piece, breaks, silence, clocks that jump. What the host promises about writes,
// one-time reads and its queues holds, and once the line behaves all values come back.
#include "host/host_session.h"
#include "rig/plant.h"
#include "tests/fuzz/support/fuzz_input.h"
#include "tests/fuzz/support/good_reply.h"
#include "tests/fuzz/support/linked_driver.h"
#include "tests/fuzz/support/promise.h"
#include "tests/fuzz/support/request_ends.h"

namespace
{

constexpr qint64 CHARACTER_ns = 260417; // 38,400 baud
constexpr qint64 TURNAROUND_ns = kvt::milliseconds(1);
constexpr int MOST_STEPS = 20000; // of a line that behaves, until all values are good

struct Wide {
    kvt::Area area;
    int station;
    const char *address;
    kvt::ValueType type;
    int bit;
};

// Values that take several words, share them, or are a part of one.
const Wide WIDE[] = {{kvt::Area::D, 1, "40.0.0", kvt::ValueType::U32, 0},
                     {kvt::Area::D, 1, "40.0.1", kvt::ValueType::U32, 0},
                     {kvt::Area::D, 2, "40.0.0", kvt::ValueType::U64, 0},
                     {kvt::Area::D, 3, "32.0.0", kvt::ValueType::Bit, 3},
                     {kvt::Area::D, 3, "32.0.0", kvt::ValueType::Bit, 4},
                     {kvt::Area::X, 1, "32.1.0", kvt::ValueType::Bit, 3},
                     {kvt::Area::C, 2, "96.0.0.2", kvt::ValueType::U32, 0}};

QVector<kvt::Tag> makeTags()
{
    QVector<kvt::Tag> tags = kvt::makePlant({3, 2, 1, 1});
    for (const Wide &wide : WIDE) {
        kvt::Tag tag = kvt::plantTag(wide.area, wide.station, QLatin1String(wide.address));
        tag.name += QStringLiteral(" %1").arg(tags.size());
        tag.form = wide.type;
        tag.form.number = wide.bit;
        tag.form.bitIsWritten = wide.type == kvt::ValueType::Bit;
        tag.isWrittenDown = wide.type == kvt::ValueType::U64;
        tags.append(tag);
    }
    return tags;
}

const QVector<kvt::Tag> &plant()
{
    static const QVector<kvt::Tag> tags = makeTags();
    return tags;
}

kvt::SessionSettings settingsFrom(FuzzInput *input)
{
    kvt::SessionSettings settings;
    settings.retryLimit = input->below(3);
    settings.commandRetryLimit = input->below(2);
    settings.readCyclically = !input->once(8);
    settings.supervisor.failuresToSwitchOff = 1 + input->below(3);
    settings.supervisor.firstPause_ns = kvt::milliseconds(100);
    settings.supervisor.longestPause_ns = kvt::seconds(1);
    kvt::EngineSettings &engine = settings.engine;
    const int line = input->below(3); // a serial port, a pseudo-terminal, TCP
    engine.characterTime_ns = line == 2 ? 0 : CHARACTER_ns;
    engine.paced = line == 0;
    engine.latency_ns = input->flag() ? kvt::milliseconds(20) : 0;
    engine.replyChecking = static_cast<kvt::ReplyChecking>(input->below(4));
    const double shares[] = {0.01, 0, 0.5, 1};
    engine.checkpointShare = shares[input->below(4)];
    engine.confirm = engine.checkpointShare > 0 && input->once(4);
    engine.remoteMode = input->once(4);
    engine.defaultTiming.gapAfterReply_ns = input->once(8) ? kvt::milliseconds(5) : 0;
    engine.defaultTiming.replyTimeout_ns = kvt::milliseconds(input->once(2) ? 0 : 20);
    return settings;
}

class Run
{
public:
    explicit Run(FuzzInput *input)
        : input_(*input), settings_(settingsFrom(input)),
          session_(linkedDriver(), settings_, plant(), &ends_)
    {
        engine().lineUp(now_ns_);
    }

    void run()
    {
        while (!input_.isEmpty()) {
            act();
            take();
            checkRest();
        }
        recover();
        session_.stop();
        require(ends_.allEnded(), "every write and one-time read ends");
        require(session_.statistics().queueMismatches == 0, "host and driver agree on the queues");
    }

private:
    kvt::ExchangeEngine &engine() { return session_.engine(); }

    void act()
    {
        switch (input_.below(16)) {
        case 0:
            arrive(input_.bytes(1 + input_.below(16)));
            break;
        case 1:
            now_ns_ += qint64(1) << input_.below(34);
            break;
        case 2:
            sent();
            break;
        case 3:
            changeLine();
            break;
        case 4:
        case 5:
            write();
            break;
        case 6:
            readOnce();
            break;
        case 7:
            damagedExchange();
            break;
        case 8:
        case 9:
        case 10:
            passDeadline();
            break;
        default:
            exchange();
            break;
        }
    }

    void arrive(const QByteArray &bytes)
    {
        now_ns_ += qint64(input_.byte()) * 10000;
        engine().received(now_ns_, bytes.constData(), bytes.size());
    }

    // A request that has been taken leaves now, or will have left at the line's pace.
    void sent()
    {
        if (!isSending_)
            return;
        isSending_ = false;
        sentAt_ns_ = now_ns_ + (settings_.engine.paced ? request_.size() * CHARACTER_ns : 0);
        engine().sent(sentAt_ns_);
        take();
    }

    void changeLine()
    {
        if (isUp_) {
            engine().lineDown(now_ns_);
            isSending_ = false;
        } else {
            engine().lineUp(now_ns_);
        }
        isUp_ = !isUp_;
    }

    void write()
    {
        const int tag = input_.below(plant().size() + 2) - 1;
        ends_.writeRequested(session_.write(tag, input_.bytes(input_.below(10))));
    }

    void readOnce()
    {
        ends_.readRequested(session_.readOnce(input_.below(plant().size() + 2) - 1));
    }

    void passDeadline()
    {
        if (engine().deadline_ns() != kvt::NEVER)
            now_ns_ = qMax(now_ns_, engine().deadline_ns());
        engine().deadlineReached(now_ns_);
    }

    void answer(const QByteArray &reply)
    {
        const qint64 duration_ns = settings_.engine.characterTime_ns * reply.size();
        now_ns_ = qMax(now_ns_, sentAt_ns_ + TURNAROUND_ns + duration_ns);
        engine().received(now_ns_, reply.constData(), reply.size());
    }

    void exchange()
    {
        sent();
        if (!PLC_driver.pendingFrames.isEmpty())
            answer(goodReply(PLC_driver.pendingFrames.first(), input_.byte()));
    }

    void damagedExchange()
    {
        sent();
        if (PLC_driver.pendingFrames.isEmpty())
            return;
        QByteArray reply = goodReply(PLC_driver.pendingFrames.first(), input_.byte());
        const int at = input_.below(reply.size() + 1);
        switch (input_.below(4)) {
        case 0:
            reply.truncate(at);
            break;
        case 1:
            reply.insert(at, input_.bytes(1 + input_.below(8)));
            break;
        case 2:
            reply.append(reply);
            break;
        default:
            reply.replace(at, 1, input_.bytes(1));
            break;
        }
        answer(reply);
    }

    void take()
    {
        if (!engine().takeRequest(&request_))
            return;
        require(isUp_, "nothing is sent while the line is down");
        require(!isSending_, "one request leaves at a time");
        require(!request_.isEmpty(), "a request has bytes");
        isSending_ = true;
    }

    void checkRest()
    {
        require(!isUp_ || isSending_ || engine().deadline_ns() != kvt::NEVER,
                "a host whose line is up waits for something that comes");
        require(PLC_driver.pendingFrames.size() <= 1, "one frame is under way");
        require(PLC_driver.writeList.size() <= QUEUE_LIMIT, "the queue of writes is bounded");
        require(PLC_driver.onceReadList.size() <= QUEUE_LIMIT, "that of reads as well");
        require(PLC_driver.extendVars.size() <= plant().size() * BLOCK_ELEMENTS,
                "the cache is bounded");
        checkValues();
    }

    void checkValues()
    {
        const QVector<kvt::TagValue> values = session_.values(now_ns_);
        require(values.size() == plant().size(), "every tag has a value");
        for (const kvt::TagValue &value : values)
            require(value.quality != kvt::Quality::Good ||
                        now_ns_ - value.readAt_ns <= settings_.staleAfter_ns,
                    "an old reading is not good");
    }

    // From here on the line behaves.
    void recover()
    {
        if (!isUp_)
            changeLine();
        for (int steps = 0; !isWell(); ++steps) {
            require(steps < MOST_STEPS, "once the line behaves all values come back");
            take();
            if (isSending_)
                exchange();
            else
                passDeadline();
        }
    }

    // With replies that nothing is known to be wrong with, values are good; those of the remote
    // mode and of a station that never began a reply properly can be doubtful as well.
    bool isWell()
    {
        if (!ends_.allEnded())
            return false;
        if (!settings_.readCyclically)
            return true;
        const QVector<kvt::TagValue> values = session_.values(now_ns_);
        for (const kvt::TagValue &value : values)
            if (value.quality != kvt::Quality::Good)
                return false;
        return true;
    }

    FuzzInput &input_;
    kvt::SessionSettings settings_;
    RequestEnds ends_;
    kvt::HostSession session_;
    QByteArray request_;
    bool isUp_ = true;
    bool isSending_ = false;
    qint64 now_ns_ = 1;
    qint64 sentAt_ns_ = 0;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    return runAfresh<Run>(data, size);
}
