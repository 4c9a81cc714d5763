// The blocks that a host lends the driver, and the tags as the driver takes them.
#ifndef KVT_HOST_DRIVER_SETUP_H
#define KVT_HOST_DRIVER_SETUP_H

#include "host/driver_library.h"
#include "tags/tag.h"

#include <QStringList>
#include <QVector>

#include <vector>

namespace kvt
{

/// Gives the driver callbacks that do nothing: what they would tell follows from the records that
/// DataCom returns. Ahead of polling.
void ignoreCallbacks(const DriverApi &api);

/// Sets a freshly loaded driver up and keeps what it must find in place while it is called.
class DriverSetup
{
public:
    /// Hands the driver its ComInfo, the local words, callbacks and the tags to be read
    /// cyclically, those without an interval; which must pass `obstacles`. `retryLimit` is not
    /// negative.
    DriverSetup(const DriverApi &api, const QVector<Tag> &tags, int retryLimit, bool remoteMode);

    /// Leaves the driver nothing to read of its own accord. Before polling starts.
    void stopCyclicReads();

    /// Takes the local words back; the driver must still be loaded.
    ~DriverSetup();
    DriverSetup(const DriverSetup &) = delete;
    DriverSetup &operator=(const DriverSetup &) = delete;

    /// What keeps these tags from being polled together, one text each; empty when nothing does.
    static QStringList obstacles(const QVector<Tag> &tags);

    /// The driver's block. Polling thread.
    ComInfo &comInfo() { return comInfo_; }

    /// Number of entries in the driver's read list.
    int readListLength() const { return readListLength_; }

private:
    DriverApi api_;
    ComInfo comInfo_ = ComInfo();
    std::vector<quint16> localWords_;
    int readListLength_ = 0;
};

} // namespace kvt

#endif
