// What can be told from a reply's own bytes about whether it answers the request.
#ifndef KVT_HOST_REPLY_CHECK_H
#define KVT_HOST_REPLY_CHECK_H

#include "host/engine_settings.h"
#include "host/request.h"

#include <bitset>

namespace kvt
{

/// True for a digit of a frame: 0 to 9 and A to F, no lower case.
bool isHexDigit(char byte);

/// True for a refusal by the request's station: NAK, the two digits of the station, CR, and not a
/// byte more or less.
bool isRefusal(const Request &request, const QByteArray &reply);

/// True when the bytes begin with ACK and the two upper-case digits of the station's low 8 bits.
bool beginsAsReplyOf(int station, const QByteArray &reply);

/// True when the bytes are a reply from its ACK to its CR, with digits in between, whoever it is
/// for.
bool isWholeReply(const QByteArray &bytes);

/// True when nothing in the reply speaks against it: it begins with ACK or NAK, the two upper-case
/// digits of the request's station follow, and where the request expects data there are upper-case
/// hexadecimal digits. Bytes that are missing do not speak against it; length and CR are the
/// driver's to judge.
bool looksLikeReply(const Request &request, const QByteArray &reply);

/// Decides which replies the driver gets to see. One thread.
class ReplyJudge
{
public:
    enum class Verdict {
        Sound,    ///< nothing speaks against it
        Doubtful, ///< it does not look like one to the request, and is taken all the same
        Foreign   ///< the same, and it is kept from the driver
    };

    explicit ReplyJudge(ReplyChecking checking) : checking_(checking) {}

    /// Judges a complete reply that is no refusal.
    Verdict judge(const Request &request, const QByteArray &reply) const;

    /// The driver has found good what was judged to be sound: from now on the station is known to
    /// answer in this way.
    void accepted(const Request &request) { conforming_.set(indexOf(request)); }

private:
    // Stations that share their low 8 bits are one on the line.
    static size_t indexOf(const Request &request)
    {
        return static_cast<size_t>(request.station & 0xFF);
    }

    ReplyChecking checking_;
    std::bitset<256> conforming_;
};

} // namespace kvt

#endif
