// Bytes and digits of frames, and how they read.
#ifndef KVT_APPS_KVT_FRAMES_FRAME_TEXT_H
#define KVT_APPS_KVT_FRAMES_FRAME_TEXT_H

#include <QByteArray>
#include <QString>

namespace kvt
{

/// The number of upper-case hexadecimal digits; -1 when they are none.
int hexNumber(const QByteArray &digits);

/// "18 (0x12)"; `digits` is the least number of hexadecimal ones.
QString numberText(int value, int digits);

/// Upper-case hexadecimal digits, a blank between the bytes.
QString hexText(const QByteArray &bytes);

} // namespace kvt

#endif
