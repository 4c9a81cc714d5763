// The driver object: the state that the driver keeps from call to call, and the locks that guard
// it.
#ifndef KVT_DRIVER_DRIVER_OBJECT_H
#define KVT_DRIVER_DRIVER_OBJECT_H

#include "driver/records.h"

#include <QtCore/QMap>
#include <QtCore/QMutex>

/// Bytes in one image area: 65,536 words of 16 bits.
constexpr int IMAGE_AREA_BYTES = 0x20000;

/// Kind of the request on the line, as `lastKind` holds it.
enum RequestKind { KIND_CYCLIC_READ = 0, KIND_WRITE = 1, KIND_ONCE_READ = 2, KIND_NONE = 100 };

/// The state of the driver but for the host's areas below and the index of the value cache. There
/// is one, `PLC_driver`, for as long as the library is loaded.
///
/// Locks are taken in the order listMutex, stationMutex or listMutex, areaMutex, never the other
/// way round, and stationMutex and areaMutex never together. Members are destroyed in the reverse
/// of the order below.
class Modbus_RTU_Master
{
public:
    ComInfo *comInfo = nullptr;      ///< the host's block; null until SetComInfo
    QList<RW_VAR> readList;          ///< cyclic reads, served in rotation (listMutex)
    QList<RW_VAR> writeList;         ///< queued writes, first in first out (listMutex)
    QList<RW_VAR> onceReadList;      ///< queued one-time reads, first in first out (listMutex)
    QList<RW_VAR> readListWork;      ///< stays empty
    QList<Protocol> pendingFrames;   ///< frames of the request in progress (polling thread only)
    QList<EXTENDVAR> extendVars;     ///< the value cache, in creation order (areaMutex); whoever
                                     ///< edits it from outside keeps every key unique
    QMap<int, int> disabledStations; ///< stations not polled; values are 0 (stationMutex)
    OnceReadDone onceReadDone = nullptr; ///< host callback; not called while null
    OwnerNotify ownerNotify = nullptr;   ///< host callback; not called while null
    QMutex listMutex;            ///< the request lists, lastKind, the burst counters and reply
    QMutex areaMutex;            ///< extendVars
    QMutex stationMutex;         ///< disabledStations
    RW_VAR reply;                ///< what DataCom returns (listMutex)
    qint32 lastKind = KIND_NONE; ///< a RequestKind
    qint32 writeBurst = 0;       ///< writes sent since the last cyclic read
    qint32 onceReadBurst = 0;    ///< one-time reads sent since the last cyclic read
    qint32 scanCount = 0;        ///< local requests answered since the last failure
    quint8 errorFlag = 0;        ///< 1 while the last exchange has failed
    // Aligned because the accessors read them as 16-bit words.
    alignas(4) quint8 imageArea1[IMAGE_AREA_BYTES] = {}; ///< zero; no operation uses it
    alignas(4) quint8 imageArea2[IMAGE_AREA_BYTES] = {}; ///< zero; no operation uses it
    alignas(4) quint8 imageArea3[IMAGE_AREA_BYTES] = {}; ///< zero; no operation uses it
};

/// The one driver object, built when the library is loaded and destroyed when it is unloaded.
extern Q_DECL_EXPORT Modbus_RTU_Master PLC_driver;

extern Q_DECL_EXPORT void *LB;  ///< the host's local bit area; kept, never read
extern Q_DECL_EXPORT void *LW;  ///< the host's local word area; one byte of it steers area-C reads
extern Q_DECL_EXPORT void *RWI; ///< a third area of the host; kept, never read

/// Copies everything but the value bytes of `from` into `to` and empties `to.data`: a finished
/// request is reported by its identity, never with its value. Takes no lock; the caller holds the
/// one that guards both records.
Q_DECL_EXPORT void passRetValue(const RW_VAR &from, RW_VAR &to);

#endif
