#include "host/request.h"

namespace kvt
{

namespace
{

// ENQ, station, command, address byte, CR; a write with a value is longer.
constexpr int COMMAND_LENGTH = 8;

RequestKind kindOf(const RW_VAR &var)
{
    if (var.rwKind == RW_WRITE)
        return RequestKind::Write;
    if (var.ownerSubId == CLASS_READ_ID)
        return RequestKind::ClassRead;
    return var.ownerSubId == CYCLIC_REQUEST_ID ? RequestKind::CyclicRead : RequestKind::OnceRead;
}

} // namespace

Request requestOf(const Protocol &frame)
{
    Request request;
    request.kind = kindOf(frame.var);
    request.id = frame.var.ownerSubId;
    request.station = frame.var.station;
    request.area = frame.var.areaType;
    request.address = frame.var.address;
    request.frame = frame.frame;
    request.expectedLength = frame.expectedReplyLength;
    request.dataStart = frame.builderParam1;
    request.dataLength = frame.builderParam2;
    request.isCommand = request.kind == RequestKind::Write && frame.frameLength == COMMAND_LENGTH;
    return request;
}

} // namespace kvt
