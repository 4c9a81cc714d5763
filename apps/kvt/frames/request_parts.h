// The numbers of a request, and which tags they mean.
#ifndef KVT_APPS_KVT_FRAMES_REQUEST_PARTS_H
#define KVT_APPS_KVT_FRAMES_REQUEST_PARTS_H

#include "tags/tag.h"

#include <QByteArray>
#include <QVector>

namespace kvt
{

/// What a request says; numbers that are missing or cannot be read are -1.
struct RequestParts {
    int station = -1;
    int command = -1;
    int addressByte = -1;
    int valueDigits = 0; ///< 2 or 4 of a write
    int value = -1;

    bool isWrite() const { return valueDigits > 0; }
    bool isCommand() const;
    bool isWhole() const { return station >= 0 && command >= 0 && addressByte >= 0; }
};

/// Reads a frame; one that is no request has no numbers.
RequestParts requestParts(const QByteArray &frame);

/// An element of a tag.
struct TagPart {
    int tag = 0;     ///< index in the list
    int element = 0; ///< from 0; in area C always the first, since a block has them all
    int elements = 0;
};

/// Returns what of `tags` a request is about. A request that reads does not say its area.
QVector<TagPart> partsMeant(const RequestParts &parts, const QVector<Tag> &tags);

} // namespace kvt

#endif
