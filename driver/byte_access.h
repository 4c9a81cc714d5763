// Safe reading of byte arrays. Internal to the driver.
#ifndef KVT_DRIVER_BYTE_ACCESS_H
#define KVT_DRIVER_BYTE_ACCESS_H

#include <QtCore/QByteArray>
#include <QtCore/QtGlobal>

/// Returns byte `index` of `bytes`, 0 beyond either end. Unsigned, so that 0x80 and above make the
/// same numbers on every processor.
inline quint8 byteOrZero(const QByteArray &bytes, int index)
{
    return index >= 0 && index < bytes.size() ? static_cast<quint8>(bytes.at(index)) : 0;
}

#endif
