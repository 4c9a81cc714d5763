// Requests for tests of the frame builders, and texts that show whole records, so that one
// comparison covers every field.
#ifndef KVT_TESTS_SUPPORT_FRAME_REQUESTS_H
#define KVT_TESTS_SUPPORT_FRAME_REQUESTS_H

#include "driver/driver_object.h"
#include "tests/support/record_text.h"

#include <QStringList>

#include <cstring>

/// A request with a value of its own in every slot, and data for two words.
inline RW_VAR distinctRequest(int areaType, const QString &addressText)
{
    RW_VAR var = filledRecord();
    var.areaType = areaType;
    var.addressText = addressText;
    var.station = 1;
    var.data = QByteArray::fromHex("34 12 CD AB");
    return var;
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

/// Lists the words of `info` that differ from what fillWords gave them, as "index=value".
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

#endif
