#include "rig/witness.h"

#include "driver/records.h"

namespace kvt
{

namespace
{

QSet<int> stationsOf(const QVector<Tag> &tags)
{
    QSet<int> stations;
    for (const Tag &tag : tags)
        stations.insert(tag.station);
    return stations;
}

} // namespace

Witness::Witness(const QVector<Tag> &tags) : answers_(tags), wrong_(stationsOf(tags)) {}

void Witness::watch(HostSession *session, VirtualLine *line)
{
    session_ = session;
    line_ = line;
    begin_.watch(line);
    wrong_.setEngine(session->engine().settings());
}

void Witness::answered(const QByteArray &request, const QByteArray &reply)
{
    answers_.answered(request, reply, line_->now_ns());
    if (reply.startsWith(FRAME_ACK))
        ++carriedOut_[request];
}

void Witness::look()
{
    if (wrong_.showing() > 0)
        wrong_.look(session_->values(line_->now_ns()), line_->now_ns());
}

void Witness::tagSuspect(int tag)
{
    wrong_.hidden(tag, line_->now_ns());
}

bool Witness::isBelied(const WriteReport &end, int carriedOut, bool isCommand)
{
    return end.state == WriteState::Acknowledged &&
           (carriedOut == 0 || (isCommand && carriedOut > 1));
}

} // namespace kvt
