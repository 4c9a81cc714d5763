// What a good reply brought and nothing has proved yet to be the answer to its own request.
#ifndef KVT_HOST_UNPROVEN_H
#define KVT_HOST_UNPROVEN_H

#include "host/value_table.h"
#include "host/write_tracker.h"

namespace kvt
{

/// One of four, told apart by `kind`.
struct Unproven {
    enum class Kind { Reading, OnceRead, Write, ReadToWrite };

    Kind kind = Kind::Reading;
    Reading reading;          ///< Reading, ReadToWrite
    int cell = 0;             ///< Reading: of the value table
    quint32 writesBefore = 0; ///< Reading: writes to the cell when it was taken
    int id = 0;               ///< OnceRead; ReadToWrite: of the write
    int tag = 0;              ///< OnceRead
    WriteReport write;        ///< Write: what to report once it is proved
};

} // namespace kvt

#endif
