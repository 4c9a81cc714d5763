// The reply that a request asks for.
#ifndef KVT_TESTS_FUZZ_SUPPORT_GOOD_REPLY_H
#define KVT_TESTS_FUZZ_SUPPORT_GOOD_REPLY_H

#include "driver/records.h"

/// As docs/protocol.md has it, with digits made from `value`. Of a request that expects no reply,
/// as many CR as it expects bytes.
inline QByteArray goodReply(const Protocol &request, int value)
{
    static const char DIGITS[] = "0123456789ABCDEF";
    if (request.expectedReplyLength < 4)
        return QByteArray(qMax(request.expectedReplyLength, 0), FRAME_CR);
    QByteArray reply(request.expectedReplyLength, '0');
    reply[0] = FRAME_ACK;
    reply[1] = DIGITS[(request.var.station >> 4) & 15];
    reply[2] = DIGITS[request.var.station & 15];
    for (int i = 3; i + 1 < reply.size(); ++i)
        reply[i] = DIGITS[(value + i) & 15];
    reply[reply.size() - 1] = FRAME_CR;
    return reply;
}

#endif
