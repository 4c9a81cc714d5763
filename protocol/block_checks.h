// Block checks over a byte buffer. The remote envelope uses CalSUM; the others are offered to the
// host. All are pure: any thread, no lock. `buffer` holds at least `length` bytes.
#ifndef KVT_PROTOCOL_BLOCK_CHECKS_H
#define KVT_PROTOCOL_BLOCK_CHECKS_H

#include <QtCore/QtGlobal>

/// Returns the low 16 bits of the sum of the bytes; 0 for length 0.
Q_DECL_EXPORT quint16 CalSUM(const quint8 *buffer, quint16 length);

/// Returns the CRC-16 of Modbus serial lines (reflected polynomial 0xA001, start 0xFFFF): 0x4B37
/// for the digits "123456789", 0xFFFF for length 0.
Q_DECL_EXPORT quint16 CalCRC(const quint8 *buffer, quint16 length);

/// Returns the inverted low byte of the sum, plus 1 after the 8-bit mask: 1 to 256, and 256 for
/// length 0 or a sum that is a multiple of 256.
Q_DECL_EXPORT quint16 CalLRC(const quint8 *buffer, quint16 length);

/// Returns the exclusive-or of the bytes, 0 to 255. Reads the first byte even for length 0.
Q_DECL_EXPORT quint16 CalXOR(const quint8 *buffer, quint16 length);

#endif
