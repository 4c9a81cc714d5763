// Bits and words between an image area and a host's byte buffer.
//
// Bits are packed eight to a byte (UC) or sixteen to a word (US), bit 0 least significant; words
// are in the processor's order; a double word (UI) is two words, high half first. In a buffer a bit
// is one byte, a word two and a double word four, low byte first.
//
// `area` points to element 0, and how far it reaches, before the pointer as well as behind it, is
// its owner's business: every element that a call names must be there. Bit -8 is bit 0 of the byte
// before the pointer. Between two such, where quotient and remainder round toward zero, a negative
// number names no bit: it reads as 0, and writing it stores the byte or word back as it is.
//
// Reading grows `out` as far as it writes, at most to what a byte array can hold, and keeps what
// lies beyond; writing skips an element whose bytes `in` does not hold. Pointers are not null. All
// take no lock: the caller owns area and buffers.
#ifndef KVT_CACHE_IMAGE_ACCESSORS_H
#define KVT_CACHE_IMAGE_ACCESSORS_H

#include <QtCore/QByteArray>
#include <QtCore/QtGlobal>

/// Reads bits `start` to `start + count - 1` of a byte area, one byte (0 or 1) each.
Q_DECL_EXPORT void GetBitFromUC(QByteArray &out, unsigned char *area, int start, int count);

/// Reads bits `start` to `start + count - 1` of a word area, one byte (0 or 1) each.
Q_DECL_EXPORT void GetBitFromUS(QByteArray &out, unsigned short *area, int start, int count);

/// Reads words `start` to `start + count - 1`, two bytes each.
Q_DECL_EXPORT void GetWordFromUS(QByteArray &out, unsigned short *area, int start, int count);

/// Reads the `count / 2` double words that begin at word `start`, four bytes each. A count of 1
/// reads the low half of the first alone.
Q_DECL_EXPORT void GetWordFromUI(QByteArray &out, unsigned short *area, int start, int count);

/// Sets `count` bits of a byte area from bit `start` on; the value 1 sets, any other clears.
Q_DECL_EXPORT void SetBitToUC(int start, unsigned char *area, QByteArray *in, int count);

/// Sets `count` bits of a word area from bit `start` on; the value 1 sets, any other clears.
Q_DECL_EXPORT void SetBitToUS(int start, unsigned short *area, QByteArray *in, int count);

/// Sets `count` words from word `start` on.
Q_DECL_EXPORT void SetWordToUS(int start, unsigned short *area, QByteArray *in, int count);

/// Sets the `count / 2` double words that begin at word `start`; a count of 1 sets nothing.
Q_DECL_EXPORT void SetWordToUI(int start, unsigned short *area, QByteArray *in, int count);

/// Copies the data bytes of `in`, the reply to the head of `pendingFrames`, into a byte area at the
/// byte of that frame's bit address, which is its eighth, rounded toward zero. Without a pending
/// frame nothing happens. Polling thread.
Q_DECL_EXPORT void SaveBitToUC(QByteArray *in, unsigned char *area);

/// Copies the data words of `in`, high byte first, the reply to the head of `pendingFrames`, into a
/// word area at that frame's word address. Without a pending frame nothing happens. Polling thread.
Q_DECL_EXPORT void SaveWordToUS(QByteArray *in, unsigned short *area);

#endif
