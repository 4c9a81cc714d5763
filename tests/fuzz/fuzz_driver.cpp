// The driver behind its entry points: any calls that a host may make, in any order, with any
// records, replies and lengths. Held against what driver/entry_points.h and docs/protocol.md say.
#include "tests/fuzz/support/driver_promises.h"
#include "tests/fuzz/support/fuzz_input.h"
#include "tests/fuzz/support/good_reply.h"
#include "tests/fuzz/support/linked_driver.h"

#include <limits>
#include <vector>

namespace
{

constexpr int LARGEST = std::numeric_limits<int>::max();
constexpr int INT_EDGES[] = {0, 1, 2, -1, 255, 256, 70, 1024, LARGEST, -LARGEST - 1};
constexpr const char *ADDRESSES[] = {"5.2.1",   "5.3.1",  "5.2.3", "1.2.0",   "1.17.0", "7.0.1.4",
                                     "7.0.0.0", "18.1.0", "18.1",  "18.01.0", "",       "-9.0.0"};
constexpr int OWN_WORD = 0x5A5A;

int onceReadDone(int, int, int, int status)
{
    require(!isFree(PLC_driver.listMutex), "a callback runs under the list mutex");
    require(status == ONCE_READ_DONE || status == ONCE_READ_FAILED, "a read is done or has failed");
    return 1;
}

void ownerNotify(QList<RW_VAR> *out, int, int flag)
{
    require(!isFree(PLC_driver.listMutex), "a callback runs under the list mutex");
    require(flag == 1 && out->isEmpty(), "owners are notified with flag 1 and an empty list");
    out->append(RW_VAR());
}

void printsNothing(QtMsgType, const QMessageLogContext &, const QString &)
{
    require(false, "the driver prints nothing");
}

class Calls
{
public:
    explicit Calls(FuzzInput *input) : input_(*input), words_(localWords())
    {
        resetDriver(info_);
        words_[BLOCK_SELECT_WORD] = 0;
        info_.hostWord0 = info_.hostWord5 = OWN_WORD;
        SetComInfo(&info_);
        require(FlashLocalRegister(nullptr, words_.data(), nullptr) == 396, "396 is the answer");
        RegistCallBackFuncIntf(onceReadDone, ownerNotify);
        changeSettings();
    }

    void run()
    {
        while (!input_.isEmpty()) {
            call();
            checkRest();
        }
        drain();
    }

private:
    // Large, and only one word of it is read: the same for all inputs.
    static std::vector<quint16> &localWords()
    {
        static std::vector<quint16> words(BLOCK_SELECT_WORD + 1);
        return words;
    }

    void call()
    {
        switch (input_.below(16)) {
        case 0:
            rebuild();
            break;
        case 1:
            addCyclic();
            break;
        case 2:
            addWrite();
            break;
        case 3:
            addOnceRead();
            break;
        case 4:
            set();
            break;
        case 5:
            get();
            break;
        case 6:
            EnCommStation(station(), input_.below(3));
            break;
        case 7:
            changeSettings();
            break;
        case 8:
            ask();
            break;
        case 9:
            answerBadly();
            break;
        case 10:
            answer(nullptr, 0);
            break;
        case 11:
            words_[BLOCK_SELECT_WORD] = static_cast<quint16>(input_.word());
            break;
        default:
            exchange();
            break;
        }
    }

    int number() { return input_.once(8) ? input_.number() : INT_EDGES[input_.below(10)]; }
    int station() { return input_.once(4) ? number() : input_.below(4); }
    int area() { return input_.once(8) ? number() : input_.below(3); }

    QString address()
    {
        return input_.once(4) ? input_.text(16) : QLatin1String(ADDRESSES[input_.below(12)]);
    }

    QByteArray value()
    {
        if (input_.once(32))
            return QByteArray(70000, static_cast<char>(input_.byte())); // beyond one checksum
        return input_.bytes(input_.below(6));
    }

    void rebuild()
    {
        QList<HOST_VAR> list;
        for (int left = input_.below(9); left > 0; --left) {
            HOST_VAR var;
            var.areaType = static_cast<quint8>(area());
            var.station = static_cast<quint8>(station());
            var.addressText = address();
            list.append(var);
        }
        const bool none = input_.once(16);
        const int entries = ReCreatReadVarList(none ? nullptr : &list);
        require(entries == PLC_driver.readList.size(), "the number of entries is returned");
        require(entries <= (none ? 0 : list.size()), "a variable makes one entry at most");
        require(entries == 0 || info_.scanComplete == 0, "a rebuilt list has not been scanned");
    }

    RW_VAR record()
    {
        RW_VAR var;
        var.ownerId = number();
        var.ownerSubId = number();
        var.rwKind = input_.once(16) ? number() : RW_READ;
        var.plcNo = input_.once(4) ? input_.below(3) : info_.localPlcNo;
        var.areaType = area();
        var.addressText = address();
        var.address =
            input_.once(4) ? number() : PLCAddressChangeIntef(var.areaType, var.addressText);
        var.station = station();
        var.count = input_.once(4) ? number() : 1;
        var.remoteTag = input_.below(3) - 1;
        var.reserved13 = number();
        return var;
    }

    void addCyclic()
    {
        RW_VAR var = record();
        const int before = PLC_driver.readList.size();
        const bool none = input_.once(16);
        require(AddListReadVar(none ? nullptr : &var) == before + (none ? 0 : 1),
                "a cyclic read is appended untested");
    }

    void addWrite()
    {
        RW_VAR var = record();
        if (!input_.once(16))
            var.rwKind = RW_WRITE;
        var.data = value();
        checkQueued(
            PLC_driver.writeList, [&](RW_VAR *one, int mode) { return AddListWriteVar(one, mode); },
            &var);
    }

    void addOnceRead()
    {
        RW_VAR var = record();
        checkQueued(
            PLC_driver.onceReadList,
            [&](RW_VAR *one, int mode) { return AddListOnceReadVar(one, mode); }, &var);
    }

    template <typename Add>
    void checkQueued(const QList<RW_VAR> &queue, Add add, RW_VAR *var)
    {
        const int mode = input_.below(3);
        for (int left = input_.once(64) ? 4 * input_.byte() : 1; left > 0; --left) {
            const int before = queue.size();
            const int queued = add(var, mode);
            const int grown = queue.size() - before;
            require(queued == queue.size() || queued == 0, "the number of requests is returned");
            require(grown == 1 || (grown == 0 && mode != LIST_APPEND),
                    "a request is queued once, or is there already");
            require(mode == LIST_APPEND || grown == 0 || queue.size() <= QUEUE_LIMIT,
                    "a full queue does not grow");
        }
        require(add(nullptr, mode) == queue.size(), "null adds nothing");
    }

    void set()
    {
        const int kind = area();
        const QString text = address();
        QByteArray bytes = value();
        const int before = PLC_driver.writeList.size();
        const bool sends = info_.hostWriteMode == HOST_WRITE_TO_PLC;
        const int result =
            SetRegisterData(QString(), kind, text, station(), bytes, number(), number(), number());
        const bool isGood = PLCAddressChangeIntef(kind, text) >= 0;
        const int expected = !isGood                            ? 0
                             : !sends                           ? 1
                             : kind != AREA_X && kind != AREA_D ? 0
                                                                : PLC_driver.writeList.size();
        require(result == expected, "a write is cached, queued or refused");
        require(sends || PLC_driver.writeList.size() == before,
                "a write that is cached is not sent");
    }

    void get()
    {
        const int kind = area();
        const QString text = address();
        const int count = input_.once(4) ? -input_.byte() : input_.below(200);
        QByteArray out = input_.bytes(input_.below(5));
        const QByteArray before = out;
        const int found = GetRegisterData(QString(), kind, text, station(), out, count);
        require(found == (PLCAddressChangeIntef(kind, text) >= 0 ? 1 : 0),
                "a negative address has no value");
        const int bytes = kind == AREA_C ? 2 * qMax(count, 0) : 2;
        const bool isFilled = found == 1 && kind >= AREA_X && kind <= AREA_C;
        require(out.size() == (isFilled ? qMax(bytes, before.size()) : before.size()),
                "the value grows as needed, and no further");
        require(!isFilled || out.mid(bytes) == before.mid(bytes),
                "bytes beyond the value are kept");
    }

    // At rest, on the one thread that there is.
    void changeSettings()
    {
        info_.defaultStation = input_.below(4);
        info_.retryLimit = input_.below(4);
        info_.purgeByStation = input_.below(2);
        info_.remoteMode = input_.once(4) ? 1 : 0;
        info_.localPlcNo = input_.once(8) ? input_.below(3) : 0;
        info_.hostWriteMode = input_.below(3);
        info_.portTag = input_.byte();
    }

    const Protocol *ask()
    {
        const Protocol *frame = ComCommunication();
        if (frame == nullptr) {
            require(PLC_driver.pendingFrames.isEmpty(), "a request under way is repeated");
            return nullptr;
        }
        require(ComCommunication() == frame, "a frame stays until it has been answered");
        require(frame->frameLength == frame->frame.size(), "a frame's length is told");
        if (frame->frame.startsWith(FRAME_ENQ) && frame->frame.endsWith(FRAME_CR) &&
            frame->frame.size() <= 12)
            checkTextFrame(*frame);
        else
            checkEnvelope(*frame);
        return frame;
    }

    void answerBadly()
    {
        QByteArray reply = input_.bytes(input_.below(160));
        if (input_.once(4) && !PLC_driver.pendingFrames.isEmpty()) {
            reply = goodReply(PLC_driver.pendingFrames.first(), input_.byte());
            const char byte = static_cast<char>(input_.byte());
            const int at = input_.below(reply.size() + 1) % qMax(reply.size(), 1);
            reply.replace(at, 1, &byte, 1); // an empty one gets a byte
        }
        const int length = input_.once(4) ? number() : reply.size();
        answer(&reply, length);
    }

    void exchange()
    {
        for (int left = input_.once(16) ? input_.below(64) : 1; left > 0; --left) {
            const Protocol *frame = ask();
            if (frame == nullptr)
                continue;
            QByteArray reply = goodReply(*frame, left + input_.byte());
            const RW_VAR var = frame->var;
            answer(&reply, reply.size());
            checkStored(var, reply);
        }
    }

    // A read whose number is that of its text can be looked up again.
    void checkStored(const RW_VAR &var, const QByteArray &reply)
    {
        const bool isRead = var.rwKind == RW_READ && var.plcNo == info_.localPlcNo &&
                            var.areaType >= AREA_X && var.areaType <= AREA_C;
        // What was queued as a write is acknowledged, whatever its record says.
        const int lengths[] = {6, 8, 4 + 2 * BLOCK_ELEMENTS};
        const bool stored = isRead && var.address >= 0 && reply.size() == lengths[var.areaType];
        if (!stored || var.address != PLCAddressChangeIntef(var.areaType, var.addressText))
            return;
        const QByteArray bytes = QByteArray::fromHex(reply.mid(3, reply.size() - 4));
        QByteArray out;
        GetRegisterData(QString(), var.areaType, var.addressText, var.station, out, 70);
        for (int i = 0; i < bytes.size(); ++i)
            require(out.at(var.areaType == AREA_C   ? 2 * i
                           : var.areaType == AREA_D ? 1 - i
                                                    : 0) == bytes.at(i),
                    "a value that was read can be looked up");
    }

    void answer(QByteArray *reply, int length)
    {
        if (PLC_driver.pendingFrames.isEmpty()) {
            require(DataCom(reply, length)->result == RESULT_SUCCESS,
                    "nothing pending is a success");
            return;
        }
        const Protocol frame = PLC_driver.pendingFrames.first();
        const int retries = info_.retryCount;
        const int expected = expectedClass(frame, reply, length, info_.localPlcNo);
        const RW_VAR *record = DataCom(reply, length);
        if (expected == RESULT_SUCCESS || expected == RESULT_REMOTE_SUCCESS) {
            require(record->result == expected, "a good reply is a success");
            require(info_.retryCount == retries, "a success keeps the count of failed attempts");
        } else if (retries + 1 <= info_.retryLimit) {
            require(record->result == RESULT_RETRY, "a failed attempt is repeated up to the limit");
            require(!PLC_driver.pendingFrames.isEmpty() &&
                        PLC_driver.pendingFrames.first().frame == frame.frame,
                    "what is repeated is the same frame");
            return;
        } else {
            const int owner = frame.var.ownerId;
            require(record->result ==
                        expected + 1 + (owner >= 0 && owner < RESULT_REQUESTERS ? owner : 0),
                    "a final failure tells its class and its requester");
            require(info_.retryCount == 0, "a final failure clears the count");
        }
        require(PLC_driver.pendingFrames.isEmpty(), "a request that has ended is gone");
        require(record->data.isEmpty(), "a finished request is reported without its value");
    }

    void checkRest()
    {
        require(isFree(PLC_driver.listMutex) && isFree(PLC_driver.areaMutex) &&
                    isFree(PLC_driver.stationMutex),
                "no lock outlives a call");
        require(info_.hostWord0 == OWN_WORD && info_.hostWord5 == OWN_WORD &&
                    info_.hostWord1 == 0 && info_.hostWord2 == 0 && info_.hostWord3 == 0 &&
                    info_.hostWord4 == 0,
                "the host's own words are left alone");
        require(PLC_driver.pendingFrames.size() <= 1, "one frame is under way");
        require(info_.retryCount >= 0, "attempts are not negative");
    }

    // Whatever was queued, a host that goes on polling serves it; but for what builds no frame.
    void drain()
    {
        EnCommStation(-1, 0);
        info_.retryLimit = 0;
        if (anyHoldsUp(PLC_driver.writeList, true) || anyHoldsUp(PLC_driver.onceReadList, false) ||
            anyHoldsUp(PLC_driver.readList, false))
            return;
        int left = 2 * (PLC_driver.writeList.size() + PLC_driver.onceReadList.size()) + 20;
        while (!PLC_driver.writeList.isEmpty() || !PLC_driver.onceReadList.isEmpty()) {
            require(--left >= 0, "queues are served");
            const Protocol *frame = ask();
            if (frame == nullptr)
                continue;
            QByteArray reply = goodReply(*frame, left);
            answer(&reply, reply.size());
        }
    }

    FuzzInput &input_;
    std::vector<quint16> &words_;
    ComInfo info_;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    qInstallMessageHandler(printsNothing);
    FuzzInput input(data, size);
    Calls(&input).run();
    return 0;
}
