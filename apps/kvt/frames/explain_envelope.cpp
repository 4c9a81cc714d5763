// The envelope of the remote mode.
#include "apps/kvt/frames/explainers.h"
#include "apps/kvt/frames/field_reader.h"
#include "driver/records.h"

#include <numeric>

namespace kvt
{

namespace
{

constexpr int SHORTEST_ENVELOPE = 22;

int sumOf(const QByteArray &bytes)
{
    return std::accumulate(bytes.begin(), bytes.end(), 0,
                           [](int sum, char byte) { return sum + static_cast<quint8>(byte); }) &
           0xFF;
}

QString areaText(quint32 areaType)
{
    if (areaType > static_cast<quint32>(Area::C))
        return QStringLiteral("no area");
    return QStringLiteral("area %1").arg(areaName(static_cast<Area>(areaType)));
}

void takeLength(FieldReader *reader, int size)
{
    const quint32 length = reader->takeBinary(1, QStringLiteral("length"));
    reader->setMeaning(QStringLiteral("%1, modulo 256").arg(length));
    if (length != static_cast<quint32>(size & 0xFF))
        reader->addProblem(QStringLiteral("the length byte says %1, the envelope has %2 bytes")
                               .arg(length)
                               .arg(size));
}

void takeChecksum(FieldReader *reader, const QByteArray &frame)
{
    const int sum = sumOf(frame.left(frame.size() - 1));
    const quint32 checksum = reader->takeBinary(1, QStringLiteral("checksum"));
    if (checksum == static_cast<quint32>(sum))
        reader->setMeaning(QStringLiteral("right"));
    else
        reader->addProblem(
            QStringLiteral("the checksum is 0x%1, the bytes before it add up to 0x%2")
                .arg(checksum, 2, 16, QLatin1Char('0'))
                .arg(sum, 2, 16, QLatin1Char('0')));
}

} // namespace

bool hasEnvelopeLength(const QByteArray &frame)
{
    return frame.size() >= SHORTEST_ENVELOPE &&
           static_cast<quint8>(frame.at(0)) == (frame.size() & 0xFF);
}

bool isEnvelope(const QByteArray &frame)
{
    return hasEnvelopeLength(frame) &&
           static_cast<quint8>(frame.at(frame.size() - 1)) == sumOf(frame.chopped(1));
}

void explainEnvelope(const QByteArray &frame, FrameExplanation *out)
{
    FieldReader reader(frame, out);
    out->kind = FrameKind::Envelope;
    takeLength(&reader, frame.size());
    reader.takeBinary(1, QStringLiteral("ownerId"));
    const quint32 kind = reader.takeBinary(1, QStringLiteral("rwKind"));
    const QString action = kind == RW_READ    ? QStringLiteral("read")
                           : kind == RW_WRITE ? QStringLiteral("write")
                                              : QStringLiteral("neither read nor write");
    reader.setMeaning(QStringLiteral("%1: %2").arg(kind).arg(action));
    const quint32 plc = reader.takeBinary(1, QStringLiteral("plcNo"));
    const quint32 station = reader.takeBinary(1, QStringLiteral("station"));
    const quint32 area = reader.takeBinary(2, QStringLiteral("areaType"));
    reader.setMeaning(QStringLiteral("%1: %2").arg(area).arg(areaText(area)));
    const quint32 address = reader.takeBinary(4, QStringLiteral("address"));
    const quint32 count = reader.takeBinary(2, QStringLiteral("count"));
    reader.takeBinary(4, QStringLiteral("remoteTag"));
    reader.takeBinary(4, QStringLiteral("reserved13"));
    if (reader.left() > 1)
        reader.take(reader.left() - 1, QStringLiteral("data"),
                    QStringLiteral("values, least significant byte first"));
    takeChecksum(&reader, frame);
    out->station = static_cast<int>(station);
    out->summary = QStringLiteral("%1 of %2 in %3, number %4, at station %5 of PLC %6")
                       .arg(action)
                       .arg(count)
                       .arg(areaText(area))
                       .arg(static_cast<qint32>(address))
                       .arg(station)
                       .arg(plc);
}

} // namespace kvt
