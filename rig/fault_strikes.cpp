#include "rig/fault_strikes.h"

#include "driver/records.h"
#include "host/host_time.h"

#include <algorithm>

namespace kvt
{

namespace
{

constexpr int FIRST_DIGIT = 3; // of the data, behind ACK and station

LineReaction one(qint64 start_ns, const QByteArray &bytes)
{
    LineReaction reaction;
    reaction.bytes.append({start_ns, bytes});
    return reaction;
}

char plainByte(Random *random)
{
    const char byte = static_cast<char>(random->below(256));
    return byte == FRAME_CR || byte == FRAME_NAK || byte == FRAME_ENQ || byte == FRAME_ACK ? '\x31'
                                                                                           : byte;
}

QByteArray plainBytes(int count, Random *random)
{
    QByteArray bytes;
    for (int i = 0; i < count; ++i)
        bytes.append(plainByte(random));
    return bytes;
}

QByteArray anyBytes(int count, Random *random)
{
    QByteArray bytes(count, '\0');
    for (char &byte : bytes)
        byte = static_cast<char>(random->below(256));
    return bytes;
}

int placeIn(const QByteArray &bytes, Random *random)
{
    return static_cast<int>(random->below(static_cast<quint32>(bytes.size())));
}

QByteArray otherStation(const QByteArray &station)
{
    return station == "02" ? QByteArray("01") : QByteArray("02");
}

// Another digit of the same kind, so that what it makes is as good a reply.
char otherDigit(char digit)
{
    return digit == '0' ? '1' : '0';
}

QByteArray foreignReply(const Struck &struck)
{
    QByteArray reply = struck.reply;
    reply.replace(1, 2, otherStation(struck.station));
    for (int i = FIRST_DIGIT; i < reply.size() - 1; ++i)
        reply[i] = otherDigit(reply.at(i));
    return reply;
}

QByteArray refusalOf(const QByteArray &station)
{
    return FRAME_NAK + station + FRAME_CR;
}

QByteArray noiseOf(NoiseKind kind, Random *random)
{
    const QByteArray plain = plainBytes(1 + static_cast<int>(random->below(4)), random);
    switch (kind) {
    case NoiseKind::Plain:
        break;
    case NoiseKind::WithCr:
        return plain + FRAME_CR;
    case NoiseKind::WithNak:
        return random->below(2) == 0 ? QByteArray(1, FRAME_NAK) + FRAME_CR : FRAME_NAK + plain;
    case NoiseKind::Refusal:
        return FRAME_NAK + QByteArray("11") + FRAME_CR;
    }
    return plain;
}

QByteArray withNoiseWithin(QByteArray reply, NoiseKind kind, Random *random)
{
    const int place = placeIn(reply, random);
    if (kind == NoiseKind::Refusal)
        return reply.insert(place, noiseOf(kind, random));
    const char byte = kind == NoiseKind::WithCr    ? FRAME_CR
                      : kind == NoiseKind::WithNak ? FRAME_NAK
                                                   : plainByte(random);
    reply[place] = byte;
    // Digits for digits would be another fault.
    if (kind == NoiseKind::Plain && place >= FIRST_DIGIT && place < reply.size() - 1)
        reply[place] = '\x7F';
    return reply;
}

} // namespace

Strike nothing()
{
    return [](const Struck &) { return LineReaction(); };
}

Strike late(double timeouts)
{
    return [timeouts](const Struck &struck) {
        const auto delay_ns =
            static_cast<qint64>(timeouts * static_cast<double>(struck.timeout_ns));
        return one(struck.now_ns + delay_ns, struck.reply);
    };
}

Strike cutShort()
{
    return [](const Struck &struck) {
        return one(struck.start_ns, struck.reply.left(1 + struck.turn % (struck.reply.size() - 1)));
    };
}

Strike doubled(double timeouts, qint64 more_ns)
{
    return [timeouts, more_ns](const Struck &struck) {
        LineReaction reaction = one(struck.start_ns, struck.reply);
        const auto delay_ns =
            static_cast<qint64>(timeouts * static_cast<double>(struck.timeout_ns));
        reaction.bytes.append({struck.end_ns() + delay_ns + more_ns, struck.reply});
        return reaction;
    };
}

Strike swollen(bool atEnd)
{
    return [atEnd](const Struck &struck) {
        QByteArray reply = struck.reply;
        const QByteArray more =
            plainBytes(1 + static_cast<int>(struck.random->below(4)), struck.random);
        const int last = reply.size() - 1;
        reply.insert(atEnd ? last : struck.turn % last, more);
        return one(struck.start_ns, reply);
    };
}

Strike foreign()
{
    return [](const Struck &struck) { return one(struck.start_ns, foreignReply(struck)); };
}

Strike foreignThenTrue(qint64 pause_ns)
{
    return [pause_ns](const Struck &struck) {
        LineReaction reaction = one(struck.start_ns, foreignReply(struck));
        reaction.bytes.append({struck.end_ns() + pause_ns, struck.reply});
        return reaction;
    };
}

Strike otherMaster()
{
    return [](const Struck &struck) {
        QByteArray request = struck.request;
        if (request.at(0) == FRAME_ENQ)
            request.replace(1, 2, otherStation(struck.station));
        LineReaction reaction = one(struck.start_ns, request);
        const qint64 answered_ns =
            struck.start_ns + request.size() * struck.characterTime_ns + milliseconds(1);
        reaction.bytes.append({answered_ns, foreignReply(struck) + struck.reply});
        return reaction;
    };
}

Strike noise(NoisePlace place, NoiseKind kind)
{
    return [place, kind](const Struck &struck) {
        const QByteArray bytes = noiseOf(kind, struck.random);
        LineReaction reaction;
        switch (place) {
        case NoisePlace::Early:
            reaction = one(struck.now_ns + (struck.start_ns - struck.now_ns) / 4, bytes);
            reaction.bytes.append({struck.start_ns, struck.reply});
            return reaction;
        case NoisePlace::Before:
            return one(struck.start_ns, bytes + struck.reply);
        case NoisePlace::Within:
            return one(struck.start_ns, withNoiseWithin(struck.reply, kind, struck.random));
        case NoisePlace::Behind:
            return one(struck.start_ns, struck.reply + bytes);
        case NoisePlace::Later:
            reaction = one(struck.start_ns, struck.reply);
            reaction.bytes.append(
                {struck.end_ns() + microseconds(struck.random->below(20000)), bytes});
            return reaction;
        case NoisePlace::Alone:
            break;
        }
        return one(struck.start_ns, bytes);
    };
}

Strike wrongDigits()
{
    return [](const Struck &struck) {
        QByteArray reply = struck.reply;
        for (int i = std::max(FIRST_DIGIT, reply.size() - 3); i < reply.size() - 1; ++i)
            reply[i] = 'z';
        return one(struck.start_ns, reply);
    };
}

Strike changedDigit()
{
    return [](const Struck &struck) {
        QByteArray reply = struck.reply;
        const int digits = reply.size() - 1 - FIRST_DIGIT;
        const int place = FIRST_DIGIT + struck.turn % std::max(digits, 1);
        reply[place] = otherDigit(reply.at(place));
        return one(struck.start_ns, reply);
    };
}

Strike lostEnd()
{
    return [](const Struck &struck) { return one(struck.start_ns, struck.reply.chopped(1)); };
}

Strike wrongEnd()
{
    return [](const Struck &struck) {
        return one(struck.start_ns, struck.reply.chopped(1) + plainByte(struck.random));
    };
}

Strike refused(bool byForeign)
{
    return [byForeign](const Struck &struck) {
        return one(struck.start_ns,
                   refusalOf(byForeign ? otherStation(struck.station) : struck.station));
    };
}

Strike refusedThenReply(bool byForeign)
{
    return [byForeign](const Struck &struck) {
        LineReaction reaction = refused(byForeign)(struck);
        const qint64 behind_ns = struck.start_ns + 4 * struck.characterTime_ns;
        const qint64 pauses_ns[] = {0, milliseconds(5), struck.timeout_ns * 3 / 2};
        reaction.bytes.append({behind_ns + pauses_ns[struck.turn % 3], struck.reply});
        return reaction;
    };
}

Strike halfRefusal(bool thenReply)
{
    return [thenReply](const Struck &struck) {
        const QByteArray whole = refusalOf(struck.station);
        const QByteArray halves[] = {whole.left(1), whole.left(2), whole.left(3),
                                     whole.left(1) + FRAME_CR, whole.left(2) + FRAME_CR};
        return one(struck.start_ns,
                   halves[struck.turn % 5] + (thenReply ? struck.reply : QByteArray()));
    };
}

Strike stream(qint64 duration_ns)
{
    return [duration_ns](const Struck &struck) {
        constexpr int PIECE = 100;
        const qint64 step_ns =
            struck.characterTime_ns > 0 ? PIECE * struck.characterTime_ns : milliseconds(5);
        LineReaction reaction;
        for (qint64 passed_ns = 0; passed_ns < duration_ns; passed_ns += step_ns)
            reaction.bytes.append({struck.start_ns + passed_ns, anyBytes(PIECE, struck.random)});
        return reaction;
    };
}

Strike garbage(int bytes)
{
    return [bytes](const Struck &struck) {
        return one(struck.start_ns, anyBytes(bytes, struck.random) + struck.reply);
    };
}

Strike byteByByte(double gaps)
{
    return [gaps](const Struck &struck) {
        const auto gap_ns = static_cast<qint64>(gaps * static_cast<double>(struck.gap_ns));
        LineReaction reaction;
        for (int i = 0; i < struck.reply.size(); ++i)
            reaction.bytes.append({struck.start_ns + i * gap_ns, struck.reply.mid(i, 1), true});
        return reaction;
    };
}

Strike echoed(bool thenReply, bool damaged)
{
    return [thenReply, damaged](const Struck &struck) {
        QByteArray echo = struck.request;
        if (damaged)
            echo[struck.turn % echo.size()] = plainByte(struck.random);
        LineReaction reaction = one(struck.now_ns, echo);
        const qint64 echoEnd_ns = struck.now_ns + echo.size() * struck.characterTime_ns;
        if (thenReply)
            reaction.bytes.append({std::max(struck.start_ns, echoEnd_ns), struck.reply});
        return reaction;
    };
}

Strike lineDown(qint64 duration_ns)
{
    return [duration_ns](const Struck &) {
        LineReaction reaction;
        reaction.lineBreak_ns = duration_ns;
        return reaction;
    };
}

Strike heldBack(qint64 latency_ns)
{
    return [latency_ns](const Struck &struck) {
        LineReaction reaction;
        reaction.bytes.append({struck.end_ns() + latency_ns, struck.reply, true});
        return reaction;
    };
}

// As an adapter does that hands over what it has each time its timer runs out.
Strike inPieces(qint64 latency_ns)
{
    return [latency_ns](const Struck &struck) {
        LineReaction reaction;
        const qint64 character_ns =
            struck.characterTime_ns > 0 ? struck.characterTime_ns : microseconds(260);
        for (int i = 0; i < struck.reply.size(); ++i) {
            const qint64 arrived_ns = struck.start_ns + (i + 1) * character_ns;
            const qint64 handedOver_ns = (arrived_ns / latency_ns + 1) * latency_ns;
            reaction.bytes.append({handedOver_ns, struck.reply.mid(i, 1), true});
        }
        return reaction;
    };
}

} // namespace kvt
