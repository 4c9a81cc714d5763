// Address texts: decimal parts joined by ".", and the numeric address they stand for.
#ifndef KVT_VARLIST_ADDRESS_TEXT_H
#define KVT_VARLIST_ADDRESS_TEXT_H

#include "driver/entry_points.h"

#include <QtCore/QStringList>

/// Returns the numeric address of `addressText` in area `areaType`; see PLCAddressChangeIntef,
/// which gives the host the same number. Any thread; no lock.
Q_DECL_EXPORT int StringAddressToInt(int areaType, QString addressText);

/// Returns the parts of an address text, empty ones kept.
QStringList addressParts(const QString &addressText);

/// Returns part `index` (from 0) as a decimal integer; 0 when it is bad or missing.
int addressPart(const QStringList &parts, int index);

/// Returns the numeric address of the first element of the area-C block that `addressText` lies
/// in: b*160 + c*80 for "a.b.c.d".
int blockStartAddress(const QString &addressText);

/// Returns `address` + `offset`, wrapping at 32 bits as the target's processor does.
int addressPlus(int address, int offset);

#endif
