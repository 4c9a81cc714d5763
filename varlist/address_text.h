// Address texts: decimal parts joined by ".", and the numeric address they stand for.
#ifndef KVT_VARLIST_ADDRESS_TEXT_H
#define KVT_VARLIST_ADDRESS_TEXT_H

#include "driver/entry_points.h"

/// The parts a, b, c and d of an address text as decimal integers; a bad or missing part is 0.
struct AddressParts {
    int a;
    int b;
    int c;
    int d;
};

/// Returns the numeric address of `addressText` in area `areaType`; see PLCAddressChangeIntef,
/// which gives the host the same number. Any thread; no lock.
Q_DECL_EXPORT int StringAddressToInt(int areaType, QString addressText);

/// Returns the parts of an address text; parts beyond the fourth are ignored.
AddressParts addressParts(const QString &addressText);

/// Sets `address` and `count` of `var` to what a read of it covers: one element at `address`, in
/// area C the whole block that its address text lies in, from b*160 + c*80 for "a.b.c.d".
void setReadRange(RW_VAR &var, int address);

#endif
