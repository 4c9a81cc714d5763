// Records as text, so that a comparison covers every field and a failure shows them.
#ifndef KVT_TESTS_SUPPORT_RECORD_TEXT_H
#define KVT_TESTS_SUPPORT_RECORD_TEXT_H

#include "driver/driver_object.h"

#include <QStringList>

/// Every field of `var`, in the order of the record.
inline QString recordText(const RW_VAR &var)
{
    return QString("owner %1/%2 rw %3 r3 %4 plc %5 result %6 name '%7' text '%8' "
                   "area %9 address %10 station %11 count %12 tag %13 r13 %14 data %15")
        .arg(var.ownerId)
        .arg(var.ownerSubId)
        .arg(var.rwKind)
        .arg(var.reserved3)
        .arg(var.plcNo)
        .arg(var.result)
        .arg(var.name, var.addressText)
        .arg(var.areaType)
        .arg(var.address)
        .arg(var.station)
        .arg(var.count)
        .arg(var.remoteTag)
        .arg(var.reserved13)
        .arg(QString::fromLatin1(var.data.toHex()));
}

/// recordText of each entry.
inline QStringList recordTexts(const QList<RW_VAR> &list)
{
    QStringList all;
    for (const RW_VAR &var : list)
        all.append(recordText(var));
    return all;
}

/// "station/area/address=hex" of each cached value, in creation order.
inline QStringList cacheTexts(const QList<EXTENDVAR> &records)
{
    QStringList all;
    for (const EXTENDVAR &record : records) {
        all.append(QString("%1/%2/%3=%4")
                       .arg(record.station)
                       .arg(record.areaType)
                       .arg(record.address)
                       .arg(QString::fromLatin1(record.data.toHex().toUpper())));
    }
    return all;
}

/// cacheTexts of the driver's own cache.
inline QStringList cacheRecords()
{
    return cacheTexts(PLC_driver.extendVars);
}

/// A record with a value of its own in every field, for tests of what a call leaves alone.
inline RW_VAR filledRecord()
{
    RW_VAR var;
    var.ownerId = 101;
    var.ownerSubId = 102;
    var.rwKind = 103;
    var.reserved3 = 104;
    var.plcNo = 105;
    var.result = 106;
    var.name = "name";
    var.addressText = "1.2.3";
    var.areaType = AREA_D;
    var.address = 109;
    var.station = 5;
    var.count = 111;
    var.remoteTag = 112;
    var.reserved13 = 113;
    var.data = QByteArray("\x11\x22", 2);
    return var;
}

/// The bytes of all words of `info`.
inline QByteArray wordsOf(const ComInfo &info)
{
    return QByteArray(reinterpret_cast<const char *>(&info), int(sizeof info));
}

/// Gives each word of `info` a value of its own, none of them 0, 1 or 2.
inline void fillWords(ComInfo &info)
{
    auto *words = reinterpret_cast<qint32 *>(&info);
    for (int i = 0; i < int(sizeof info / sizeof *words); ++i)
        words[i] = 1000 + i;
}

#endif
