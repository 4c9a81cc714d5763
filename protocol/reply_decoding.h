// Decoding of the reply to a read into the value cache.
#ifndef KVT_PROTOCOL_REPLY_DECODING_H
#define KVT_PROTOCOL_REPLY_DECODING_H

#include <QtCore/QByteArray>
#include <QtCore/QtGlobal>

/// Decodes `reply` (not null), the answer to the head of `pendingFrames`, into the records of its
/// variable: one byte for X, one word for D, BLOCK_ELEMENTS records of a byte for C; any other area
/// stores nothing. Digits are not validated; bytes beyond the end read as 0. Without a pending
/// frame nothing happens. Polling thread; takes no lock, the caller holds the area mutex.
Q_DECL_EXPORT void SaveToLocalDataErea(QByteArray *reply);

#endif
