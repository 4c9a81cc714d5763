#include "cache/host_data.h"

#include "cache/value_cache.h"
#include "driver/byte_access.h"
#include "driver/driver_object.h"
#include "driver/no_throw.h"
#include "varlist/address_text.h"

#include <QtCore/QMutexLocker>

#include <cstring>
#include <limits>

namespace
{

// A byte array cannot hold more elements of two bytes than this.
constexpr int MOST_ELEMENTS = std::numeric_limits<int>::max() / 2 - 64;

void readBit(QByteArray &out, int station, int address)
{
    putWord(out, 0, byteOrZero(cachedData(station, AREA_X, address), 0));
}

void readWord(QByteArray &out, int station, int address)
{
    putWord(out, 0, wordFrom(cachedData(station, AREA_D, address), 0, 1));
}

void readElements(QByteArray &out, int station, int address, int count)
{
    const int elements = qMin(count, MOST_ELEMENTS);
    CachedRun run = cachedRun(station, AREA_C, address, elements);
    QByteArray copy = out; // which may be the bytes of one of the records
    for (int i = 0; i < elements; ++i)
        putWord(copy, 2 * i, byteOrZero(nextData(run), 0));
    out = copy;
}

// Copied byte by byte: what is stored may stand in memory of the host's own.
void storeBytes(QByteArray &data, const char *bytes, int count)
{
    std::memcpy(sized(data, count), bytes, static_cast<size_t>(count));
}

RW_VAR writeRequest(const QString &name, int kind, const QString &addressText, int address,
                    int station)
{
    const ComInfo &info = *PLC_driver.comInfo;
    RW_VAR var;
    var.rwKind = RW_WRITE;
    var.reserved3 = info.remoteMode;
    var.plcNo = info.localPlcNo;
    var.name = name;
    var.addressText = addressText;
    var.areaType = kind;
    var.address = address;
    var.station = info.purgeByStation == 0 ? info.defaultStation : station;
    return var;
}

// One element only, missing bytes as 0.
QByteArray elementBytes(int kind, const QByteArray &value)
{
    QByteArray data(kind == AREA_D ? 2 : 1, '\0');
    for (int i = 0; i < data.size(); ++i)
        data[i] = static_cast<char>(byteOrZero(value, i));
    return data;
}

} // namespace

int GetRegisterData(QString, int kind, QString addressText, int station, QByteArray &out, int count)
{
    return noThrow([&]() -> int {
        const int address = StringAddressToInt(kind, addressText);
        if (address < 0)
            return 0;
        QMutexLocker lock(&PLC_driver.areaMutex);
        if (kind == AREA_X)
            readBit(out, station, address);
        else if (kind == AREA_D)
            readWord(out, station, address);
        else if (kind == AREA_C)
            readElements(out, station, address, count);
        return 1;
    });
}

int SetRegisterData(QString name, int kind, QString addressText, int station, QByteArray &value,
                    int count, int ownerId, int ownerSubId)
{
    return noThrow([&]() -> int {
        const int address = StringAddressToInt(kind, addressText);
        if (address < 0)
            return 0;
        RW_VAR var = writeRequest(name, kind, addressText, address, station);
        var.ownerId = ownerId;
        var.ownerSubId = ownerSubId;
        if (PLC_driver.comInfo->hostWriteMode != HOST_WRITE_TO_PLC) {
            var.count = count;
            var.data = value;
            WriteDataToLocal(&var);
            return 1;
        }
        if (kind != AREA_X && kind != AREA_D)
            return 0;
        var.count = 1;
        var.data = elementBytes(kind, value);
        return AddListWriteVar(&var, 0);
    });
}

void WriteDataToLocal(RW_VAR *var)
{
    QMutexLocker lock(&PLC_driver.areaMutex);
    const int kind = var->areaType;
    const int elements = qMin(var->count, var->data.size() / 2); // both bytes of each present
    if (kind != AREA_X && kind != AREA_D)
        return;
    CachedRun run = cachedRun(var->station, kind, var->address, elements);
    for (int i = 0; i < elements; ++i)
        storeBytes(nextData(run), var->data.constData() + 2 * i, kind == AREA_D ? 2 : 1);
}
