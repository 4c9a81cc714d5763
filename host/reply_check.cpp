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

bool isHexDigit(char byte)
{
    return (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'F');
}

bool isRefusal(const Request &request, const QByteArray &reply)
{
    return reply.size() == 4 && reply.at(0) == FRAME_NAK && namesStation(reply, request.station) &&
           reply.at(3) == FRAME_CR;
}

bool beginsAsReplyOf(int station, const QByteArray &reply)
{
    return reply.size() >= 3 && reply.at(0) == FRAME_ACK && namesStation(reply, station);
}

bool isWholeReply(const QByteArray &bytes)
{
    constexpr int SHORTEST = 6;
    return bytes.size() >= SHORTEST && bytes.at(0) == FRAME_ACK && bytes.endsWith(FRAME_CR) &&
           std::all_of(bytes.cbegin() + 1, bytes.cend() - 1, isHexDigit);
}

bool looksLikeReply(const Request &request, const QByteArray &reply)
{
    if (reply.isEmpty())
        return true;
    if (reply.at(0) != FRAME_ACK && reply.at(0) != FRAME_NAK)
        return false;
    if (!namesStation(reply, request.station))
        return false;
    // Only a reply of full length has its data where the request expects them.
    return reply.at(0) == FRAME_NAK || reply.size() != request.expectedLength ||
           hasDataDigits(request, reply);
}

ReplyJudge::Verdict ReplyJudge::judge(const Request &request, const QByteArray &reply) const
{
    if (checking_ == ReplyChecking::Off || looksLikeReply(request, reply))
        return Verdict::Sound;
    const bool refuse = checking_ == ReplyChecking::Refuse ||
                        (checking_ == ReplyChecking::Auto && conforming_.test(indexOf(request)));
    return refuse ? Verdict::Foreign : Verdict::Doubtful;
}

} // namespace kvt
