// Requests for tests of the frame builders, and texts that show whole records, so that one
// comparison covers every field.
#ifndef KVT_TESTS_SUPPORT_FRAME_REQUESTS_H
#define KVT_TESTS_SUPPORT_FRAME_REQUESTS_H

#include "driver/driver_object.h"

#include <QStringList>

#include <cstring>

/// A request with a different value in every slot.
inline RW_VAR distinctRequest(int areaType, const QString &addressText)
{
    RW_VAR var;
    var.ownerId = 7;
    var.ownerSubId = 70;
    var.rwKind = 17;
    var.reserved3 = 33;
    var.plcNo = 4;
    var.result = 55;
    var.name = "pump speed";
    var.addressText = addressText;
    var.areaType = areaType;
    var.address = 909;
    var.station = 1;
    var.count = 11;
    var.remoteTag = -12;
    var.reserved13 = 1313;
    var.data = QByteArray::fromHex("34 12 CD AB");
    return var;
}

/// All fifteen slots of a request as one text.
inline QString slotsOf(const RW_VAR &var)
{
    QStringList texts;
    for (const int value :
         {var.ownerId, var.ownerSubId, var.rwKind, var.reserved3, var.plcNo, var.result,
          var.areaType, var.address, var.station, var.count, var.remoteTag, var.reserved13})
        texts.append(QString::number(value));
    texts << var.name << var.addressText << QString::fromLatin1(var.data.toHex());
    return texts.join("|");
}

/// The fields of a frame record beside its bytes and its variable, as one text.
inline QString fieldsOf(const Protocol &frame)
{
    return QString("length %1, reply %2, data from %3 for %4, extra %5 %6 %7")
        .arg(frame.frameLength)
        .arg(frame.expectedReplyLength)
        .arg(frame.builderParam1)
        .arg(frame.builderParam2)
        .arg(frame.extra0)
        .arg(frame.extra1)
        .arg(frame.extra2);
}

/// The fields that fieldsOf shows for a frame of `length` bytes with the usual zero extras.
inline QString expectedFields(int length, int replyLength, int dataStart, int dataCount)
{
    return QString("length %1, reply %2, data from %3 for %4, extra 0 0 0")
        .arg(length)
        .arg(replyLength)
        .arg(dataStart)
        .arg(dataCount);
}

/// The bytes in hex, parted by blanks.
inline QString spacedHex(const QByteArray &bytes)
{
    QStringList pairs;
    for (int i = 0; i < bytes.size(); ++i)
        pairs.append(QString::fromLatin1(bytes.mid(i, 1).toHex().toUpper()));
    return pairs.join(" ");
}

/// The bytes of every pending frame in hex, head first.
inline QStringList pendingHex()
{
    QStringList frames;
    for (const Protocol &pending : PLC_driver.pendingFrames)
        frames.append(spacedHex(pending.frame));
    return frames;
}

/// Gives every word of `info` the value 1000 + its index.
inline void markWords(ComInfo &info)
{
    qint32 words[sizeof(ComInfo) / sizeof(qint32)];
    qint32 value = 1000;
    for (qint32 &word : words)
        word = value++;
    std::memcpy(&info, words, sizeof words);
}

/// Lists the words of `info` that differ from what markWords gave them, as "index=value".
inline QStringList changedWords(const ComInfo &info)
{
    qint32 words[sizeof(ComInfo) / sizeof(qint32)];
    std::memcpy(words, &info, sizeof words);
    QStringList changed;
    int index = 0;
    for (const qint32 word : words) {
        if (word != 1000 + index)
            changed.append(QString("%1=%2").arg(index).arg(word));
        ++index;
    }
    return changed;
}

/// What changedWords lists once a builder has announced one reply frame.
inline QStringList oneReplyAwaited()
{
    return {"11=1", "12=0"};
}

/// The value cache as texts "station/area/address=hex", in creation order.
inline QStringList cacheRecords()
{
    QStringList records;
    for (const EXTENDVAR &record : PLC_driver.extendVars)
        records.append(QString("%1/%2/%3=%4")
                           .arg(record.station)
                           .arg(record.areaType)
                           .arg(record.address)
                           .arg(QString::fromLatin1(record.data.toHex().toUpper())));
    return records;
}

/// Holds the driver's three mutexes: what is called meanwhile hangs if it takes one of them.
class AllMutexesHeld
{
public:
    AllMutexesHeld() = default;

private:
    QMutexLocker lists{&PLC_driver.listMutex};
    QMutexLocker stations{&PLC_driver.stationMutex};
    QMutexLocker areas{&PLC_driver.areaMutex};
};

#endif
