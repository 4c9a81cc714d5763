#include "simulator/plc_request.h"

namespace kvt
{

namespace
{

constexpr int READ_LENGTH = 8;
constexpr int BYTE_WRITE_LENGTH = 10;
constexpr int WORD_WRITE_LENGTH = 12;
constexpr int ENVELOPE_HEADER = 21;
constexpr int SHORTEST_ENVELOPE = 22;

int byteAt(const QByteArray &bytes, int index)
{
    return static_cast<quint8>(bytes[index]);
}

int nibble(char digit)
{
    if (digit >= '0' && digit <= '9')
        return digit - '0';
    if (digit >= 'A' && digit <= 'F')
        return digit - 'A' + 10;
    return -1;
}

/// Returns the byte that two digits make; -1 when they are not upper-case hexadecimal or missing.
int hexByte(const QByteArray &frame, int index)
{
    if (index + 1 >= frame.size())
        return -1;
    const int high = nibble(frame[index]);
    const int low = nibble(frame[index + 1]);
    return high < 0 || low < 0 ? -1 : high * 16 + low;
}

int bigEndian(const QByteArray &bytes, int index, int size)
{
    quint32 value = 0;
    for (int i = 0; i < size; ++i)
        value = value << 8 | static_cast<quint32>(byteAt(bytes, index + i));
    return static_cast<int>(value);
}

/// Returns the number that the value digits of a write make; -1 when one of them is none.
int writtenValue(const QByteArray &frame)
{
    int value = 0;
    for (int i = READ_LENGTH - 1; i + 1 < frame.size(); i += 2) {
        const int byte = hexByte(frame, i);
        if (byte < 0)
            return -1;
        value = value * 256 + byte;
    }
    return value;
}

/// Two bytes an element, low byte first; a missing byte counts as 0.
QVector<int> envelopeValues(const QByteArray &data)
{
    QVector<int> values;
    for (int i = 0; i < data.size(); i += 2) {
        const int high = i + 1 < data.size() ? byteAt(data, i + 1) : 0;
        values.append(high * 256 + byteAt(data, i));
    }
    return values;
}

} // namespace

PlcRequest parseTextFrame(const QByteArray &frame)
{
    PlcRequest request;
    request.station = hexByte(frame, 1);
    request.command = hexByte(frame, 3);
    request.addressByte = hexByte(frame, 5);
    request.mark = request.command;
    if (request.station < 0 || request.command < 0 || request.addressByte < 0)
        return request;
    if (frame.size() == READ_LENGTH) {
        request.kind = PlcRequest::Kind::Read;
        return request;
    }
    if (frame.size() != BYTE_WRITE_LENGTH && frame.size() != WORD_WRITE_LENGTH)
        return request;
    const int value = writtenValue(frame);
    if (value < 0)
        return request;
    request.kind = PlcRequest::Kind::Write;
    request.area = frame.size() == BYTE_WRITE_LENGTH ? 0 : 1;
    request.values.append(value);
    return request;
}

PlcRequest parseEnvelope(const QByteArray &envelope)
{
    PlcRequest request;
    const int rwKind = byteAt(envelope, 2);
    request.station = byteAt(envelope, 4);
    request.area = bigEndian(envelope, 5, 2);
    request.number = bigEndian(envelope, 7, 4);
    request.mark = byteAt(envelope, envelope.size() - 1);
    const int dataSize = envelope.size() - SHORTEST_ENVELOPE;
    if (rwKind == 0 && dataSize == 0)
        request.kind = PlcRequest::Kind::Read;
    if (rwKind == 1 && dataSize > 0) {
        request.kind = PlcRequest::Kind::Write;
        request.values = envelopeValues(envelope.mid(ENVELOPE_HEADER, dataSize));
    }
    return request;
}

bool envelopeIsComplete(const QByteArray &bytes)
{
    const int size = bytes.size();
    if (size < SHORTEST_ENVELOPE || size % 256 != byteAt(bytes, 0))
        return false;
    int sum = 0;
    for (int i = 0; i + 1 < size; ++i)
        sum += byteAt(bytes, i);
    return sum % 256 == byteAt(bytes, size - 1);
}

bool envelopeIsBroken(const QByteArray &bytes)
{
    if (bytes.size() < SHORTEST_ENVELOPE)
        return false;
    const int first = byteAt(bytes, 0);
    const int announced = first < SHORTEST_ENVELOPE ? first + 256 : first;
    const int dataSize = byteAt(bytes, 2) == 1 ? 2 * bigEndian(bytes, 11, 2) : 0;
    return bytes.size() >= qMax(announced, SHORTEST_ENVELOPE + dataSize);
}

} // namespace kvt
