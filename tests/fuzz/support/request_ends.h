// Watches that each write and each one-time read of a host ends once.
#ifndef KVT_TESTS_FUZZ_SUPPORT_REQUEST_ENDS_H
#define KVT_TESTS_FUZZ_SUPPORT_REQUEST_ENDS_H

#include "rig/rig.h"
#include "tests/fuzz/support/promise.h"

#include <QSet>

class RequestEnds : public kvt::HostEvents
{
public:
    void writeRequested(int id) { writes_.insert(id); }
    void readRequested(int id) { reads_.insert(id); }
    bool allEnded() const { return writes_.isEmpty() && reads_.isEmpty(); }

    void writeChanged(const kvt::WriteReport &report) override
    {
        require(writes_.contains(report.id), "a write is reported until it has ended");
        if (report.isFinal())
            writes_.remove(report.id);
    }

    void onceReadEnded(int id, int, bool) override
    {
        require(reads_.remove(id), "a one-time read ends once");
    }

private:
    QSet<int> writes_; // that have not ended
    QSet<int> reads_;
};

#endif
