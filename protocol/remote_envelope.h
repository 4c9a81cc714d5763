// The binary envelope of remote mode. Polling thread, with the list mutex held by the caller; the
// request is framed as it stands, whatever its area, count or data.
#ifndef KVT_PROTOCOL_REMOTE_ENVELOPE_H
#define KVT_PROTOCOL_REMOTE_ENVELOPE_H

#include "driver/records.h"

/// Queues the 22-byte envelope of a read. `var` is not null and not modified. No lock.
Q_DECL_EXPORT void Remote_ReadVar(RW_VAR *var);

/// Queues the envelope of a write and stores the value in the cache at once; it stays there even if
/// the write fails later. `var` is not null and not modified. Takes the area mutex.
Q_DECL_EXPORT void Remote_WriteVar(RW_VAR *var);

#endif
