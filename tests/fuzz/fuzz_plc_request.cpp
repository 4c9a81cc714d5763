// The simulated PLC's reading of what a master sends: any bytes in any pieces at any time, as text
// or as envelopes. Nothing is kept without bound, and every answer is one of the protocol.
#include "rig/plant.h"
#include "simulator/simulated_plc.h"
#include "tests/fuzz/support/fuzz_input.h"
#include "tests/fuzz/support/promise.h"

#include <algorithm>

namespace
{

constexpr int LONGEST_TEXT = 33;
constexpr int LONGEST_ENVELOPE = 22 + 2 * 65535;

const QVector<kvt::Tag> &plant()
{
    static const QVector<kvt::Tag> tags = kvt::makePlant({3, 4, 2, 1});
    return tags;
}

void checkRequest(const kvt::PlcRequest &request)
{
    require(request.station >= -1 && request.station <= 255, "a station is one or none");
    require(request.kind == kvt::PlcRequest::Kind::Bad || request.station >= 0,
            "a request names its station");
    require((request.kind == kvt::PlcRequest::Kind::Write) == !request.values.isEmpty(),
            "a write has values, and nothing else has");
    for (const int value : request.values)
        require(value >= 0 && value <= 0xFFFF, "values are words");
}

void checkParsers(const QByteArray &bytes)
{
    checkRequest(kvt::parseTextFrame(bytes));
    if (kvt::envelopeIsComplete(bytes)) {
        require(bytes.size() >= 22, "an envelope has 22 bytes or more");
        checkRequest(kvt::parseEnvelope(bytes));
    }
}

// ACK or NAK, digits, CR.
void checkReply(const QByteArray &reply)
{
    require(reply.size() >= 4 && reply.size() <= 144, "a reply has 4 to 144 bytes");
    require(reply.at(0) == 0x06 || reply.at(0) == 0x15, "a reply begins with ACK or NAK");
    require(reply.endsWith('\r'), "a reply ends with CR");
    require(std::all_of(reply.cbegin() + 1, reply.cend() - 1,
                        [](char byte) {
                            return (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'F');
                        }),
            "a reply is made of upper-case digits");
}

class Line
{
public:
    Line(FuzzInput *input, kvt::FrameFinder::Mode mode)
        : input_(*input), mode_(mode), finder_(mode, kvt::PlcConfig().frameGap_ns),
          plc_(plant(), configFor(mode), 1)
    {
    }

    void run()
    {
        while (!input_.isEmpty()) {
            now_ns_ += qint64(1) << input_.below(30);
            const QByteArray bytes = piece();
            find(bytes);
            answer(bytes);
        }
    }

private:
    static kvt::PlcConfig configFor(kvt::FrameFinder::Mode mode)
    {
        kvt::PlcConfig config;
        config.mode = mode;
        config.byteTime_ns = 1000;
        return config;
    }

    // Bytes of the input, or some of them many times over.
    QByteArray piece()
    {
        const int kind = input_.byte();
        const QByteArray bytes = input_.bytes(1 + kind % 32);
        return kind < 250 ? bytes : bytes.repeated(50);
    }

    void find(const QByteArray &bytes)
    {
        for (const char byte : bytes) {
            ++taken_;
            const std::optional<QByteArray> frame = finder_.take(byte, now_ns_);
            if (frame) {
                framed_ += frame->size();
                checkParsers(*frame);
            }
            const qint64 kept = taken_ - framed_ - finder_.droppedBytes();
            require(kept >= 0 && kept <= (mode_ == kvt::FrameFinder::Mode::Text ? LONGEST_TEXT
                                                                                : LONGEST_ENVELOPE),
                    "what is kept has a bound");
        }
    }

    void answer(const QByteArray &bytes)
    {
        const kvt::PlcReaction reaction = plc_.receive(bytes, now_ns_);
        qint64 end_ns = end_ns_;
        for (const kvt::Transmission &transmission : reaction.transmissions) {
            require(transmission.start_ns >= end_ns, "replies do not overlap");
            end_ns = transmission.start_ns + transmission.bytes.size() * 1000;
            checkReply(transmission.bytes);
        }
        end_ns_ = end_ns;
        require(reaction.lineBreak_ns == 0, "a sound line stays up");
        const kvt::PlcCounters &counters = plc_.counters();
        require(counters.reads + counters.writes + counters.commands + counters.refusals +
                        counters.notAddressed + counters.unanswered ==
                    counters.exchanges,
                "every exchange has one outcome");
    }

    FuzzInput &input_;
    kvt::FrameFinder::Mode mode_;
    kvt::FrameFinder finder_;
    kvt::SimulatedPlc plc_;
    qint64 now_ns_ = 1;
    qint64 end_ns_ = 0;
    qint64 taken_ = 0;
    qint64 framed_ = 0;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzInput input(data, size);
    const bool isText = input.flag();
    checkParsers(FuzzInput(input).rest());
    Line(&input, isText ? kvt::FrameFinder::Mode::Text : kvt::FrameFinder::Mode::Envelope).run();
    return 0;
}
