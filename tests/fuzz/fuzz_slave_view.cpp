// The host as a hostile slave sees it, on a virtual clock, with the host's default settings.
//
// The slaves are honest memories: every value tells which request it was given to. The input
// chooses a line (a serial port, one behind an adapter that holds pieces back, a
// pseudo-terminal, TCP), how long the stations take, writes, and what goes wrong with which reply,
// at which time and with which bytes. What docs/line.md promises has to hold:
//
// - One fault at a time, each undone by a pause of the host before the next: a value that is proved
//   was given to its own request, whichever attempt at it, and so was what is acknowledged; a value
//   that was not is withdrawn or read again within the bound of "Checkpoints".
// - Any faults at any time: every write and one-time read ends once, queues are bounded, no old
//   value is good, the host goes on sending.
// - After either, for half of the inputs: once the line behaves, all values are those of their own
//   requests.
//
// Not asked for, because docs/line.md says that nothing on the line can tell: that a value whose
// digits were changed into other digits on the way is found out ("Damaged digits"; bytes put into
// the middle of a reply count as that where one of them is a digit, and so do bytes that
// hold a whole reply of the station, with its true one some time behind them); that a value is
// withdrawn whose slip was ended by a second fault (so that the first promise is made for one fault
// at a time); that a station's doubtful values are its own.
#include "tags/tag_address.h"
#include "tests/fuzz/support/linked_driver.h"
#include "tests/fuzz/support/slave_plant.h"
#include "tests/fuzz/support/slave_witness.h"
#include "tests/fuzz/support/story.h"

namespace
{

constexpr int MOST_EVENTS = 1000;  // at one time
constexpr int MOST_REQUESTS = 500; // of one input, and as many until all is well again
constexpr qint64 LONGEST_REST_ns = kvt::seconds(10);
constexpr qint64 RECOVERY_ns = kvt::seconds(6);
constexpr qint64 LAST_READINGS_ns = kvt::seconds(3);
constexpr int PIECES[] = {16, 1, 8, 1}; // bytes that a FIFO or an adapter hands over together
constexpr qint64 TURNAROUNDS_ns[] = {100000, 1000000, 8000000, 40000000};

struct Choices {
    explicit Choices(FuzzInput *input)
    {
        const int what = input->byte();
        plant = static_cast<PlantKind>(what % PLANT_KINDS);
        oneAtATime = (what / 64) != 3;
        const int how = input->byte();
        const qint64 characters_ns[] = {1041667, 260417, 86806}; // 9,600, 38,400, 115,200 baud
        const qint64 character_ns = characters_ns[how / 4 % 3];
        const LineKind kinds[] = {
            {character_ns, true, 0, 1},
            {character_ns, true, kvt::milliseconds(5 * (how / 64)), PIECES[how / 64]},
            {0, false, 0, 1 + how / 16},
            {0, false, 0, 255}};
        line = kinds[how % 4];
        hostCharacter_ns = how % 4 == 3 ? 0 : character_ns;
        const int turnarounds = input->byte();
        turnaround_ns[0] = TURNAROUNDS_ns[turnarounds % 4];
        turnaround_ns[1] = TURNAROUNDS_ns[turnarounds / 4 % 4];
        patient = turnarounds < 16;
        recovers = turnarounds < 128;
    }

    PlantKind plant;
    bool oneAtATime;
    LineKind line;
    qint64 hostCharacter_ns;
    qint64 turnaround_ns[2];
    bool patient;  // waits for a station that is off, which takes many requests
    bool recovers; // goes on until all is well again: half of an input's time
};

kvt::SessionSettings settingsOf(const Choices &choices)
{
    kvt::SessionSettings settings; // the defaults, but for what the line says of itself
    settings.engine.characterTime_ns = choices.hostCharacter_ns;
    settings.engine.paced = choices.line.paced;
    return settings;
}

class Run
{
public:
    explicit Run(FuzzInput *input)
        : input_(*input), choices_(input), tags_(slaveTags(choices_.plant)), line_(choices_.line),
          slave_(input, &line_, choices_.turnaround_ns), witness_(tags_, &slave_),
          session_(linkedDriver(), settingsOf(choices_), tags_, &witness_)
    {
        engine().lineUp(now_ns_);
    }

    void run()
    {
        while (!input_.isEmpty() && witness_.request() < MOST_REQUESTS)
            step();
        if (choices_.recovers)
            recover();
        session_.stop();
        require(witness_.allEnded(), "every write and one-time read ends");
        require(session_.statistics().queueMismatches == 0, "host and driver agree on the queues");
    }

private:
    kvt::ExchangeEngine &engine() { return session_.engine(); }

    void recover()
    {
        faultsEnded_ = true;
        recoversUntil_ =
            witness_.request() + (choices_.patient ? 4 * MOST_REQUESTS : MOST_REQUESTS);
        stepUntilWell(RECOVERY_ns);
        const QSet<int> off = witness_.stationsOff();
        stepUntilWell(LAST_READINGS_ns);
        if (witness_.request() < recoversUntil_)
            checkRecovered(off);
    }

    void step()
    {
        const qint64 bytes_ns = line_.next_ns();
        const qint64 next_ns =
            std::min(std::min(bytes_ns, requestArrives_ns_), std::min(mended_ns_, deadline_ns()));
        require(next_ns != kvt::NEVER, "a host whose line is up waits for something that comes");
        events_ = next_ns > now_ns_ ? 0 : events_ + 1;
        require(events_ < MOST_EVENTS, "time goes on");
        now_ns_ = std::max(now_ns_, next_ns);
        if (mended_ns_ <= now_ns_)
            mend();
        else if (requestArrives_ns_ <= now_ns_)
            requestArrives();
        else if (bytes_ns <= now_ns_)
            bytesArrive();
        else
            engine().deadlineReached(now_ns_);
        send();
        check();
    }

    qint64 deadline_ns() { return isUp() ? engine().deadline_ns() : kvt::NEVER; }
    bool isUp() const { return mended_ns_ == kvt::NEVER; }

    void bytesArrive()
    {
        const QByteArray piece = line_.step(now_ns_);
        if (piece.isEmpty())
            return;
        if (std::exchange(awaitsReply_, false))
            witness_.replyBegan(now_ns_);
        tell(now_ns_, "to host", piece);
        engine().received(now_ns_, piece.constData(), piece.size());
    }

    // As the poller does: what a paced line will have sent is told ahead of time.
    void send()
    {
        while (engine().takeRequest(&frame_)) {
            require(isUp(), "nothing is sent while the line is down");
            const qint64 duration_ns =
                choices_.line.paced ? frame_.size() * choices_.line.characterTime_ns : 0;
            requestArrives_ns_ = now_ns_ + duration_ns;
            requestNumber_ = witness_.request();
            sentAt_ns_ = now_ns_;
            awaitsReply_ = true;
            tell(now_ns_, "from host", frame_);
            engine().sent(requestArrives_ns_);
        }
    }

    void requestArrives()
    {
        requestArrives_ns_ = kvt::NEVER;
        const bool mayFail = !faultsEnded_ && (!choices_.oneAtATime || !faultIsActive_);
        slave_.receive(frame_, now_ns_, requestNumber_, mayFail);
        faultIsActive_ = slave_.takeFaultHappened() || faultIsActive_;
        const qint64 break_ns = slave_.takeBreak_ns();
        if (break_ns > 0)
            breakLine(break_ns);
        else if (!faultsEnded_ && input_.left() > 0 && (witness_.request() & 15) == 7)
            command();
    }

    void breakLine(qint64 duration_ns)
    {
        tell(now_ns_, "line is down");
        line_.clear();
        mended_ns_ = now_ns_ + duration_ns;
        engine().lineDown(now_ns_);
    }

    void mend()
    {
        mended_ns_ = kvt::NEVER;
        sentAt_ns_ = now_ns_;
        tell(now_ns_, "line is up");
        engine().lineUp(now_ns_);
    }

    // A few writes or a one-time read, now and then.
    void command()
    {
        const int what = input_.byte();
        const int tag = what / 16 % tags_.size();
        if (what % 4 == 1)
            witness_.readRequested(session_.readOnce(tag));
        for (int left = what % 4 == 2 ? 1 + what % 16 / 4 : 0; left > 0; --left)
            write(tag);
    }

    void write(int tag)
    {
        const kvt::Tag &target = tags_.at(tag);
        ++written_;
        const char value[] = {static_cast<char>(written_), static_cast<char>(written_ >> 8)};
        const int id = session_.write(tag, QByteArray(value, kvt::valueSize(target.area)));
        witness_.writeRequested(id);
        witness_.setFrameOf(id, writeFrame(target, value));
    }

    static QByteArray writeFrame(const kvt::Tag &tag, const char (&value)[2])
    {
        kvt::TagAddress address;
        kvt::parseTagAddress(tag.area, tag.address, &address);
        const char bytes[] = {static_cast<char>(tag.station), static_cast<char>(address.a),
                              static_cast<char>(kvt::writeAddressByte(address)),
                              tag.area == kvt::Area::D ? value[1] : value[0], value[0]};
        return '\x05' + QByteArray(bytes, tag.area == kvt::Area::D ? 5 : 4).toHex().toUpper() +
               '\r';
    }

    void check()
    {
        require(!isUp() || now_ns_ - sentAt_ns_ < LONGEST_REST_ns, "the host goes on sending");
        require(PLC_driver.pendingFrames.size() <= 1, "one frame is under way");
        require(PLC_driver.writeList.size() + PLC_driver.onceReadList.size() <= 2 * QUEUE_LIMIT,
                "the queues are bounded");
        require(PLC_driver.extendVars.size() <= tags_.size() * BLOCK_ELEMENTS,
                "the cache is bounded");
        if (witness_.takeProofEnded())
            checkProof();
        if (choices_.oneAtATime)
            checkBound();
    }

    void checkProof()
    {
        const QVector<kvt::TagValue> values = session_.values(now_ns_);
        tell(values.first().provedUntil_ns, "is the end of what is proved");
        for (int tag = 0; tag < values.size(); ++tag) {
            const kvt::TagValue &value = values.at(tag);
            const bool isGood = value.quality == kvt::Quality::Good;
            require(!isGood || now_ns_ - value.readAt_ns <= kvt::SessionSettings().staleAfter_ns,
                    "an old reading is not good");
            require(!choices_.oneAtATime || !isGood || !value.isProved() || !isWrong(tag),
                    "a proved value was given to its own request");
        }
        require(!choices_.oneAtATime || !witness_.hasAcknowledgedNothing(),
                "what is acknowledged was carried out");
        // The pause heard nothing, and nothing is left to be heard.
        if (values.first().provedUntil_ns > provedUntil_ns_ && line_.next_ns() == kvt::NEVER)
            faultIsActive_ = false;
        provedUntil_ns_ = values.first().provedUntil_ns;
    }

    bool isWrong(int tag) const { return witness_.wrongSince_ns(tag) != kvt::NEVER; }

    // From one pause to the next, the pause itself, and the exchange that it waits for.
    void checkBound()
    {
        const qint64 pause_ns = witness_.longestReply_ns() * 5 / 4 + kvt::milliseconds(1);
        const qint64 bound_ns = 101 * pause_ns + kvt::seconds(1);
        for (int tag = 0; tag < tags_.size(); ++tag)
            require(!isWrong(tag) || now_ns_ - witness_.wrongSince_ns(tag) <= bound_ns ||
                        session_.values(now_ns_).at(tag).quality != kvt::Quality::Good,
                    "a wrong value is withdrawn within the bound");
    }

    void stepUntilWell(qint64 longest_ns)
    {
        const qint64 limit_ns = now_ns_ + longest_ns;
        while (now_ns_ < limit_ns && witness_.request() < recoversUntil_ && !isWell())
            step();
    }

    bool isWell()
    {
        if (!isUp() || !witness_.isQuiet() || line_.next_ns() != kvt::NEVER)
            return false;
        const QVector<kvt::TagValue> values = session_.values(now_ns_);
        for (int tag = 0; tag < values.size(); ++tag)
            if (values.at(tag).quality != kvt::Quality::Good || isWrong(tag))
                return false;
        return true;
    }

    // A station that was still off some seconds ago is not waited for.
    void checkRecovered(const QSet<int> &off)
    {
        const QVector<kvt::TagValue> values = session_.values(now_ns_);
        for (int tag = 0; tag < values.size(); ++tag)
            require(off.contains(tags_.at(tag).station) ||
                        (values.at(tag).quality == kvt::Quality::Good && !isWrong(tag)),
                    "once the line behaves, values are those of their own requests");
    }

    FuzzInput &input_;
    Choices choices_;
    const QVector<kvt::Tag> &tags_;
    SlaveLine line_;
    HostileSlave slave_;
    SlaveWitness witness_;
    kvt::HostSession session_;
    QByteArray frame_;
    int requestNumber_ = 0;
    qint64 now_ns_ = 1;
    qint64 requestArrives_ns_ = kvt::NEVER;
    qint64 mended_ns_ = kvt::NEVER;
    qint64 sentAt_ns_ = 0;
    qint64 provedUntil_ns_ = 0;
    int recoversUntil_ = 0; // the request from which on that is given up
    bool awaitsReply_ = false;
    bool faultsEnded_ = false;
    bool faultIsActive_ = false;
    int written_ = 0;
    int events_ = 0;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    return runAfresh<Run>(data, size);
}
