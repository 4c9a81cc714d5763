// The receive cycle: judging a reply and retiring the request. Its entry point is DataCom.
#ifndef KVT_CYCLE_RECEIVE_CYCLE_H
#define KVT_CYCLE_RECEIVE_CYCLE_H

#include "driver/entry_points.h"

/// Judges the reply to the head of `pendingFrames` on the local path and stores its data under the
/// area mutex. `received` may be null when `receivedLength` is 0. Returns a result code; with no
/// frame pending, that of a bad reply. Polling thread; takes the area mutex.
Q_DECL_EXPORT int DealDataOfLocalArea(QByteArray *received, int receivedLength);

/// The same on the remote path. It stores only requests whose `remoteTag` is -1, and deliberately
/// without the area mutex. Polling thread; takes no lock.
Q_DECL_EXPORT int DealDataOfRemoteArea(QByteArray *received, int receivedLength);

#endif
