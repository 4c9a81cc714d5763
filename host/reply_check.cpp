#include "host/reply_check.h"

#include <algorithm>

namespace kvt
{

namespace
{

char hexDigit(int nibble)
{
    return "0123456789ABCDEF"[nibble & 0x0F];
}

bool isHexDigit(char byte)
{
    return (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'F');
}

bool namesStation(const QByteArray &reply, int station)
{
    const bool highFits = reply.size() < 2 || reply.at(1) == hexDigit(station >> 4);
    const bool lowFits = reply.size() < 3 || reply.at(2) == hexDigit(station);
    return highFits && lowFits;
}

bool hasDataDigits(const Request &request, const QByteArray &reply)
{
    const int end = std::min(request.dataStart + request.dataLength, reply.size());
    for (int i = request.dataStart; i < end; ++i)
        if (!isHexDigit(reply.at(i)))
            return false;
    return true;
}

} // namespace

bool isRefusal(const QByteArray &reply)
{
    return reply.startsWith(NAK) && reply.endsWith(CARRIAGE_RETURN);
}

bool looksLikeReply(const Request &request, const QByteArray &reply)
{
    if (reply.isEmpty())
        return true;
    if (reply.at(0) != ACK && reply.at(0) != NAK)
        return false;
    if (!namesStation(reply, request.station))
        return false;
    // Only a reply of full length has its data where the request expects them.
    return reply.at(0) == NAK || reply.size() != request.expectedLength ||
           hasDataDigits(request, reply);
}

} // namespace kvt
