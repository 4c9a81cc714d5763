// Tags that are good each for itself but cannot be polled from one list.
#ifndef KVT_TAGS_TAG_CONFLICTS_H
#define KVT_TAGS_TAG_CONFLICTS_H

#include "tags/tag_address.h"

#include <QHash>

namespace kvt
{

/// Finds the tags that stand in each other's way. Tags of the very same cell do not, nor do tags
/// of one area-C block. Not thread-safe.
class TagConflicts
{
public:
    /// Adds a tag; `address` is its parsed address. Returns an empty text, or says with which
    /// earlier tag it conflicts and why; it is then not added.
    QString add(const Tag &tag, const TagAddress &address);

private:
    /// What a tag asks the PLC for.
    struct Request {
        QString name;
        Area area;
        int station;
        int command;
        quint8 readByte;
    };

    static bool sameCell(const Request &one, const Request &other);
    static QString entryConflict(const Request &earlier, const Request &request);
    QString conflictOf(const Request &request, int entry, int written) const;

    QHash<int, Request> byEntry_; ///< by what the driver's read list tells entries apart
    QHash<int, Request> byRead_;  ///< by the bytes of the read frame
    QHash<int, Request> byWrite_; ///< by the bytes and the length of the write frame
};

} // namespace kvt

#endif
