// Frames on the line, written as their digits.
#ifndef KVT_TESTS_SUPPORT_FRAMES_H
#define KVT_TESTS_SUPPORT_FRAMES_H

#include <QByteArray>

/// A request: ENQ, `text` as it stands, CR.
inline QByteArray request(const QByteArray &text)
{
    return '\x05' + text + '\r';
}

/// A reply with data or an acknowledgement: ACK, `text` as it stands, CR.
inline QByteArray reply(const QByteArray &text)
{
    return '\x06' + text + '\r';
}

/// A refusal: NAK, `text` as it stands, CR.
inline QByteArray refusal(const QByteArray &text)
{
    return '\x15' + text + '\r';
}

#endif
