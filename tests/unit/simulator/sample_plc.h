// A simulated PLC for the simulator's tests, and what is asked of it.
#ifndef KVT_TESTS_UNIT_SIMULATOR_SAMPLE_PLC_H
#define KVT_TESTS_UNIT_SIMULATOR_SAMPLE_PLC_H

#include "simulator/simulated_plc.h"
#include "tests/support/frames.h"
#include "tests/unit/simulator/sample_tags.h"

/// The read of the word 5.2.1 at station 1, and what a PLC of samplePlc answers.
inline const QByteArray READ_1 = request("010528");
inline const QByteArray REPLY_1 = reply("0112AB");

/// Returns a PLC of sampleTags whose word 5.2.1 at station 1 is 12AB.
inline kvt::SimulatedPlc samplePlc(const kvt::PlcConfig &config = kvt::PlcConfig(),
                                   quint64 seed = 1)
{
    kvt::SimulatedPlc plc(sampleTags(), config, seed);
    plc.memory().setValue(1, kvt::Area::D, QStringLiteral("5.2.1"), 0x12AB);
    return plc;
}

/// Returns all bytes of a reaction, one transmission behind the other.
inline QByteArray bytesOf(const kvt::PlcReaction &reaction)
{
    QByteArray bytes;
    for (const kvt::Transmission &sent : reaction.transmissions)
        bytes.append(sent.bytes);
    return bytes;
}

/// Sends bytes, the last of which arrives at `time_ns`, and returns all bytes answered.
inline QByteArray ask(kvt::SimulatedPlc *plc, const QByteArray &bytes, qint64 time_ns = 0)
{
    return bytesOf(plc->receive(bytes, time_ns));
}

#endif
