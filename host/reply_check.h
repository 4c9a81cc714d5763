// What can be told from a reply's own bytes about whether it answers the request.
#ifndef KVT_HOST_REPLY_CHECK_H
#define KVT_HOST_REPLY_CHECK_H

#include "host/request.h"

namespace kvt
{

constexpr char ENQ = 0x05;
constexpr char ACK = 0x06;
constexpr char CARRIAGE_RETURN = 0x0D;
constexpr char NAK = 0x15;

/// True for a complete refusal: NAK first, CR last.
bool isRefusal(const QByteArray &reply);

/// True when nothing in the reply speaks against it: it begins with ACK or NAK, the two upper-case
/// digits of the request's station follow, and where the request expects data there are upper-case
/// hexadecimal digits. Bytes that are missing do not speak against it; length and CR are the
/// driver's to judge.
bool looksLikeReply(const Request &request, const QByteArray &reply);

} // namespace kvt

#endif
