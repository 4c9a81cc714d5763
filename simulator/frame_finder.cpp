#include "simulator/frame_finder.h"

#include "simulator/plc_request.h"
#include "simulator/reply_codec.h"

namespace kvt
{

namespace
{

constexpr char ENQ = 0x05;
constexpr int LONGEST_TEXT = 32; ///< far beyond any request

} // namespace

std::optional<QByteArray> FrameFinder::take(char byte, qint64 time_ns)
{
    return mode_ == Mode::Text ? takeText(byte) : takeEnvelope(byte, time_ns);
}

void FrameFinder::clear()
{
    dropped_ += buffer_.size();
    buffer_.clear();
}

QByteArray FrameFinder::takeAll()
{
    QByteArray frame = buffer_;
    buffer_.clear();
    return frame;
}

std::optional<QByteArray> FrameFinder::takeText(char byte)
{
    if (byte == ENQ || buffer_.size() >= LONGEST_TEXT)
        clear();
    if (byte != ENQ && buffer_.isEmpty()) {
        ++dropped_;
        return std::nullopt;
    }
    buffer_.append(byte);
    if (byte != CR)
        return std::nullopt;
    return takeAll();
}

std::optional<QByteArray> FrameFinder::takeEnvelope(char byte, qint64 time_ns)
{
    if (!buffer_.isEmpty() && time_ns - lastByte_ns_ > gap_ns_)
        clear();
    lastByte_ns_ = time_ns;
    buffer_.append(byte);
    if (envelopeIsComplete(buffer_))
        return takeAll();
    if (envelopeIsBroken(buffer_))
        clear();
    return std::nullopt;
}

} // namespace kvt
