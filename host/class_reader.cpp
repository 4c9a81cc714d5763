#include "host/class_reader.h"

#include "host/once_reads.h"

namespace kvt
{

ClassReader::ClassReader(const QVector<Tag> &tags, const TagIndex &index)
    : plan_(tags, index), scheduler_(plan_, 0)
{
    for (const ClassEntry &entry : plan_.entries()) {
        Source source;
        source.request = onceRead(index.cells().at(entry.cell), CLASS_READ_ID, 0);
        sources_.push_back(source);
    }
}

std::vector<ClassPace> ClassReader::paces() const
{
    std::vector<ClassPace> paces;
    for (const ReadClass &one : plan_.classes())
        paces.emplace_back(one.interval_ns, one.entries.size());
    return paces;
}

void ClassReader::lineUp(qint64 now_ns)
{
    if (isEmpty())
        return;
    isRunning_ = true;
    scheduler_.restart(now_ns);
    for (Source &source : sources_)
        source.answeredAt_ns = NEVER;
}

void ClassReader::queueDue(const DriverApi &api, int plcNo, qint64 now_ns)
{
    if (!isRunning_ || underWay_ >= 0)
        return;
    const int entry = scheduler_.take(now_ns);
    if (entry < 0)
        return;
    RW_VAR &request = sources_[static_cast<size_t>(entry)].request;
    request.plcNo = plcNo;
    // A full queue does not grow, and all that is in it goes first.
    const int before = api.AddListOnceReadVar(nullptr, 0);
    if (api.AddListOnceReadVar(&request, 0) > before)
        underWay_ = entry;
    else
        scheduler_.ended(entry);
}

void ClassReader::release()
{
    scheduler_.ended(underWay_);
    underWay_ = -1;
}

ClassReader::Ended ClassReader::ended(const Attempt &attempt)
{
    Ended result;
    if (underWay_ < 0)
        return result;
    Source &source = sources_[static_cast<size_t>(underWay_)];
    if (attempt.isSuccess() && source.answeredAt_ns != NEVER) {
        result.readClass = plan_.entries().at(underWay_).readClass;
        result.since_ns = attempt.endedAt_ns - source.answeredAt_ns;
    }
    source.answeredAt_ns = attempt.isSuccess() ? attempt.endedAt_ns : NEVER;
    release();
    return result;
}

void ClassReader::stationFailed(int station)
{
    if (underWay_ >= 0 && sources_[static_cast<size_t>(underWay_)].request.station == station)
        release();
}

void ClassReader::stationSwitched(int station, bool on, qint64 now_ns)
{
    if (isEmpty())
        return;
    for (Source &source : sources_)
        if (source.request.station == station)
            source.answeredAt_ns = NEVER;
    if (on)
        scheduler_.stationOn(station, now_ns);
    else
        scheduler_.stationOff(station);
}

qint64 ClassReader::due_ns() const
{
    return isRunning_ && underWay_ < 0 ? scheduler_.due_ns() : NEVER;
}

} // namespace kvt
