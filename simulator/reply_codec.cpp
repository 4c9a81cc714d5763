#include "simulator/reply_codec.h"

namespace kvt
{

namespace
{

constexpr char ACK = 0x06;
constexpr char NAK = 0x15;
constexpr char DIGITS[] = "0123456789ABCDEF";
constexpr int FIRST_DIGIT = 3; ///< index of the first digit behind the station

void appendHex(QByteArray *reply, int byte)
{
    reply->append(DIGITS[(byte >> 4) & 0x0F]).append(DIGITS[byte & 0x0F]);
}

QByteArray makeReply(char first, int station, const QByteArray &bytes)
{
    QByteArray text(1, first);
    appendHex(&text, station);
    for (const char byte : bytes)
        appendHex(&text, static_cast<quint8>(byte));
    return text.append(CR);
}

/// Returns a byte that is not `other`.
char differentByte(char other, Random *random)
{
    return static_cast<char>(static_cast<quint32>(static_cast<quint8>(other)) + 1 +
                             random->below(255));
}

QByteArray withExtraBytes(const QByteArray &bytes, Random *random)
{
    QByteArray extra;
    const quint32 count = 1 + random->below(4);
    for (quint32 i = 0; i < count; ++i)
        extra.append(differentByte(CR, random));
    return random->below(2) == 0 ? extra + bytes : bytes + extra;
}

QByteArray withFlippedDigit(QByteArray bytes, Random *random)
{
    const auto digits = static_cast<quint32>(bytes.size() - FIRST_DIGIT - 1);
    const int index = FIRST_DIGIT + static_cast<int>(random->below(digits));
    const QByteArray others = QByteArray(DIGITS).replace(bytes[index], "");
    bytes[index] = others[static_cast<int>(random->below(static_cast<quint32>(others.size())))];
    return bytes;
}

} // namespace

QByteArray dataReply(int station, const QByteArray &data)
{
    return makeReply(ACK, station, data);
}

QByteArray acknowledgement(int station, int mark)
{
    return makeReply(ACK, station, QByteArray(1, static_cast<char>(mark)));
}

QByteArray refusal(int station)
{
    return makeReply(NAK, station, QByteArray());
}

QByteArray withStation(const QByteArray &reply, int station)
{
    QByteArray digits;
    appendHex(&digits, station);
    return QByteArray(reply).replace(1, 2, digits);
}

QByteArray damaged(const QByteArray &reply, FaultKind fault, Random *random)
{
    switch (fault) {
    case FaultKind::Truncation:
        return reply.left(1 +
                          static_cast<int>(random->below(static_cast<quint32>(reply.size() - 1))));
    case FaultKind::ExtraBytes:
        return withExtraBytes(reply, random);
    case FaultKind::WrongEnd:
        return reply.left(reply.size() - 1) + differentByte(CR, random);
    case FaultKind::FlippedDigit:
        return withFlippedDigit(reply, random);
    case FaultKind::Duplicate:
        return reply + reply;
    default:
        return reply;
    }
}

} // namespace kvt
