// The value cache: every value read from the PLC or written by the host, one record per element.
#ifndef KVT_CACHE_VALUE_CACHE_H
#define KVT_CACHE_VALUE_CACHE_H

#include <QtCore/QByteArray>
#include <QtCore/QtGlobal>

/// Returns the index in `extendVars` of the first record with this key; without one, a record of
/// four zero bytes is appended first. Takes no lock: the caller holds the area mutex for as long
/// as it uses the index.
Q_DECL_EXPORT int ExtendFindSameVar(int station, int areaType, int address);

/// Returns the value bytes of that record, under the same condition.
QByteArray &cachedData(int station, int areaType, int address);

#endif
