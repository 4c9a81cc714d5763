// Builders of the write requests. Polling thread, with the list mutex held by the caller.
// `var` is not null and not modified; value bytes that it lacks are sent as 0.
#ifndef KVT_PROTOCOL_WRITE_FRAMES_H
#define KVT_PROTOCOL_WRITE_FRAMES_H

#include "driver/records.h"

/// Builds the write of `var` (areas X and D; others build nothing), then calls the host's
/// `ownerNotify`, then, unless the last exchange failed, stores the value in the cache.
/// Takes the area mutex.
Q_DECL_EXPORT void WriteRegister(RW_VAR *var);

/// Queues the 10-byte write of one byte of area X. No lock.
Q_DECL_EXPORT void WriteAnalog_X(RW_VAR *var);

/// Queues the 12-byte write of one word of area D, or, for the address texts that begin "18.1",
/// the 8-byte command without a value. No lock.
Q_DECL_EXPORT void WriteAnalog_D(RW_VAR *var);

#endif
