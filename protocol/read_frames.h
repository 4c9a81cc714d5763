// Builders of the read requests. Each appends one 8-byte frame to `pendingFrames` and tells the
// host's block that one reply frame is awaited. Polling thread, with the list mutex held by the
// caller; they take no lock of their own. `var` is not null and not modified.
#ifndef KVT_PROTOCOL_READ_FRAMES_H
#define KVT_PROTOCOL_READ_FRAMES_H

#include "driver/records.h"

/// Builds the read of `var` by its area code; an unknown code builds nothing.
Q_DECL_EXPORT void ReadRegister(RW_VAR *var);

/// Reads one byte of area X.
Q_DECL_EXPORT void ReadAnalog_X(RW_VAR *var);

/// Reads one word of area D.
Q_DECL_EXPORT void ReadAnalog_D(RW_VAR *var);

/// Reads a block of area C. The high nibble of its address comes from the host's local word
/// 50,000, which counts as 0 while the host has given no local words.
Q_DECL_EXPORT void ReadAnalog_C(RW_VAR *var);

#endif
