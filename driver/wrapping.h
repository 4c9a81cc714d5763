// Arithmetic that wraps at 32 bits, as the target's processor does. Internal to the driver.
#ifndef KVT_DRIVER_WRAPPING_H
#define KVT_DRIVER_WRAPPING_H

#include <QtCore/QtGlobal>

/// Returns `a` + `b`. Host words and addresses may hold any number, and the sum of two signed ones
/// must not overflow.
inline int wrappingSum(int a, int b)
{
    return static_cast<int>(static_cast<quint32>(a) + static_cast<quint32>(b));
}

#endif
