#include "host/reply_collector.h"

#include "host/reply_check.h"

#include <algorithm>
#include <cstring>

namespace kvt
{

namespace
{

constexpr int USUAL_REPLY = 256; // no reply on the ASCII link is longer

} // namespace

// Room that is reserved stays when the array is emptied, so that no reply costs an allocation.
ReplyCollector::ReplyCollector()
{
    bytes_.reserve(USUAL_REPLY);
}

void ReplyCollector::start(const Request &request, bool remoteMode)
{
    request_ = request.frame;
    bytes_.resize(0);
    echoed_ = 0;
    lengthLimit_ = request.expectedLength < 0 ? LONGEST_REPLY : request.expectedLength;
    remoteMode_ = remoteMode;
    complete_ = false;
}

int ReplyCollector::skipEcho(const char *bytes, int count)
{
    int taken = 0;
    while (taken < count && echoed_ < request_.size() && bytes[taken] == request_.at(echoed_)) {
        ++taken;
        ++echoed_;
    }
    if (taken < count)
        echoed_ = request_.size();
    return taken;
}

int ReplyCollector::add(const char *bytes, int count)
{
    int take = std::min(count, lengthLimit_ - bytes_.size());
    if (!remoteMode_ && take > 0) {
        const void *end = std::memchr(bytes, FRAME_CR, static_cast<size_t>(take));
        if (end != nullptr) {
            take = static_cast<int>(static_cast<const char *>(end) - bytes) + 1;
            complete_ = true;
        }
    }
    bytes_.append(bytes, take);
    if (bytes_.size() >= lengthLimit_)
        complete_ = true;
    return take;
}

bool ReplyCollector::addOverrun(const char *bytes, int count)
{
    if (bytes_.endsWith(FRAME_CR))
        return false;
    const int room = std::min(count, LONGEST_REPLY - bytes_.size());
    const int end = QByteArray::fromRawData(bytes, std::max(room, 0)).indexOf(FRAME_CR);
    bytes_.append(bytes, end < 0 ? std::max(room, 0) : end + 1);
    return end >= 0;
}

} // namespace kvt
