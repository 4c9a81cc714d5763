// What a host session can be told beforehand.
#ifndef KVT_HOST_SESSION_SETTINGS_H
#define KVT_HOST_SESSION_SETTINGS_H

#include "host/engine_settings.h"
#include "host/station_supervisor.h"

#include <QString>

namespace kvt
{

/// Settings of a host session; times in nanoseconds.
struct SessionSettings {
    EngineSettings engine;
    SupervisorSettings supervisor;
    int retryLimit = 2;                     ///< extra attempts for each request, not negative
    int commandRetryLimit = 0;              ///< the same for commands without a value, which a
                                            ///< repeated attempt may have carried out twice
    qint64 staleAfter_ns = seconds(5);      ///< age at which a reading is no longer good; of a
                                            ///< tag with an interval three of them if that is more
    bool readCyclically = true;             ///< false: only what `readOnce` and `write` request
    QHash<QString, qint64> staleAfterOf_ns; ///< the same for single tags, by name
    int lastRequestId = 0; ///< ids of writes and one-time reads go on behind it, as where a former
                           ///< host has ended; behind the largest int comes 1
};

} // namespace kvt

#endif
