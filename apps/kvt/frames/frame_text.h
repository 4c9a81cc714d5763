// Bytes and digits of frames, and how they read.
#ifndef KVT_APPS_KVT_FRAMES_FRAME_TEXT_H
#define KVT_APPS_KVT_FRAMES_FRAME_TEXT_H

#include <QByteArray>
#include <QString>

namespace kvt
{

constexpr char BYTE_ENQ = 0x05;
constexpr char BYTE_ACK = 0x06;
constexpr char BYTE_CR = 0x0D;
constexpr char BYTE_NAK = 0x15;

/// The number of upper-case hexadecimal digits; -1 when they are none.
int hexNumber(const QByteArray &digits);

/// "18 (0x12)"; `digits` is the least number of hexadecimal ones.
QString numberText(int value, int digits);

/// Upper-case hexadecimal digits, a blank between the bytes.
QString hexText(const QByteArray &bytes);

} // namespace kvt

#endif
