// Bytes and words in byte arrays, whatever the arrays' length. Internal to the driver.
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

/// Returns the word of two bytes of `bytes`, each 0 where it lies beyond an end.
inline quint16 wordFrom(const QByteArray &bytes, int low, int high)
{
    return static_cast<quint16>(byteOrZero(bytes, low) | byteOrZero(bytes, high) << 8);
}

/// Puts `word` into bytes `index` and `index` + 1 of `out`, low byte first; `out` grows as needed.
inline void putWord(QByteArray &out, int index, int word)
{
    if (out.size() < index + 2)
        out.resize(index + 2);
    char *const at = out.data() + index;
    at[0] = static_cast<char>(word & 0xFF);
    at[1] = static_cast<char>((word >> 8) & 0xFF);
}

/// Makes `bytes` as long as `size` says and returns them, shared with no other array, to be
/// written.
inline char *sized(QByteArray &bytes, int size)
{
    if (bytes.size() != size)
        bytes.resize(size);
    return bytes.data();
}

#endif
