#include "host/trace_replay.h"

#include "host/driver_setup.h"
#include "host/trace_format.h"

#include <algorithm>
#include <iterator>
#include <vector>

namespace kvt
{

namespace
{

// A frame of the driver as "ask" has it.
QByteArray askedText(const Protocol *frame)
{
    if (frame == nullptr)
        return QByteArrayLiteral("nothing");
    return traceHex(frame->frame) + ' ' + QByteArray::number(frame->expectedReplyLength);
}

QByteArray judgedText(const RW_VAR &judged)
{
    QByteArray text = QByteArray::number(judged.result);
    for (const int field : {judged.areaType, judged.station, judged.address, judged.ownerSubId})
        text += ' ' + QByteArray::number(field);
    return text;
}

// Plays one trace. Each step returns what is different, empty when nothing is.
class Player
{
public:
    explicit Player(const DriverApi &api) : api_(api), localWords_(BLOCK_SELECT_WORD + 1)
    {
        api_.SetComInfo(&info_);
        api_.FlashLocalRegister(nullptr, localWords_.data(), nullptr);
        ignoreCallbacks(api_);
    }
    ~Player() { api_.FlashLocalRegister(nullptr, nullptr, nullptr); }
    Player(const Player &) = delete;
    Player &operator=(const Player &) = delete;

    QString play(const TraceRecord &record);
    int calls() const { return calls_; }

private:
    QString setInfo(const TraceRecord &record);
    QString addVariable(const TraceRecord &record);
    QString setLocalWord(const TraceRecord &record);
    QString makeList(const TraceRecord &record);
    QString switchStation(const TraceRecord &record);
    QString write(const TraceRecord &record);
    QString readOnce(const TraceRecord &record);
    QString expectNothing(const TraceRecord &record);
    QString ask(const TraceRecord &record);
    QString compareSent(const TraceRecord &record);
    QString collect(const TraceRecord &record);
    QString judge(const TraceRecord &record);
    QString compareValue(const TraceRecord &record);
    QString compare(const QString &what, const QByteArray &now, const QByteArray &recorded);

    DriverApi api_;
    ComInfo info_ = ComInfo();
    std::vector<quint16> localWords_;
    QList<HOST_VAR> variables_;
    QByteArray asked_;    // the frame that the driver gave last
    QByteArray received_; // since it was sent
    int calls_ = 0;
};

QString Player::play(const TraceRecord &record)
{
    struct Step {
        const char *name;
        QString (Player::*run)(const TraceRecord &);
    };
    static constexpr Step STEPS[] = {
        {trace::INFO, &Player::setInfo},
        {trace::LOCAL, &Player::setLocalWord},
        {trace::VARIABLE, &Player::addVariable},
        {trace::LIST, &Player::makeList},
        {trace::STATION, &Player::switchStation},
        {trace::WRITE, &Player::write},
        {trace::ONCE, &Player::readOnce},
        {trace::NOTHING, &Player::expectNothing},
        {trace::ASK, &Player::ask},
        {trace::SENT, &Player::compareSent},
        {trace::RECEIVED, &Player::collect},
        {trace::JUDGED, &Player::judge},
        {trace::VALUE, &Player::compareValue},
    };
    const auto step = std::find_if(std::begin(STEPS), std::end(STEPS),
                                   [&](const Step &s) { return record.is(s.name); });
    return step == std::end(STEPS) ? QString() : (this->*step->run)(record);
}

QString Player::setInfo(const TraceRecord &record)
{
    for (const QByteArray &word : record.words) {
        const int equals = word.indexOf('=');
        const QByteArray name = word.left(equals);
        const auto entry = std::find_if(std::begin(TRACE_INFO_WORDS), std::end(TRACE_INFO_WORDS),
                                        [&](const TraceInfoWord &e) { return name == e.name; });
        bool isNumber = false;
        const int value = word.mid(equals + 1).toInt(&isNumber);
        if (entry == std::end(TRACE_INFO_WORDS) || !isNumber)
            return QStringLiteral("\"%1\" sets no word of the driver's block")
                .arg(QString::fromLatin1(word));
        info_.*entry->word = value;
    }
    return QString();
}

QString Player::setLocalWord(const TraceRecord &record)
{
    localWords_[BLOCK_SELECT_WORD] = static_cast<quint16>(record.number(0));
    return QString();
}

QString Player::addVariable(const TraceRecord &record)
{
    HOST_VAR variable;
    variable.areaType = static_cast<quint8>(record.number(0));
    variable.station = static_cast<quint8>(record.number(1));
    variable.addressText = record.text(2);
    variables_.append(variable);
    return QString();
}

QString Player::makeList(const TraceRecord &record)
{
    const int entries = api_.ReCreatReadVarList(&variables_);
    variables_.clear();
    return compare(QStringLiteral("length of the read list"), QByteArray::number(entries),
                   record.words.at(0));
}

QString Player::switchStation(const TraceRecord &record)
{
    api_.EnCommStation(record.number(0), record.number(1));
    return QString();
}

QString Player::write(const TraceRecord &record)
{
    QByteArray value = record.bytes(6);
    const int queued =
        api_.SetRegisterData(QString(), record.number(0), record.text(2), record.number(1), value,
                             record.number(3), record.number(4), record.number(5));
    return compare(QStringLiteral("queued writes"), QByteArray::number(queued), record.words.at(7));
}

QString Player::readOnce(const TraceRecord &record)
{
    RW_VAR request;
    request.areaType = record.number(0);
    request.station = record.number(1);
    request.addressText = record.text(2);
    request.plcNo = record.number(3);
    request.ownerId = record.number(4);
    request.ownerSubId = record.number(5);
    const int queued = api_.AddListOnceReadVar(&request, record.number(6));
    return compare(QStringLiteral("queued one-time reads"), QByteArray::number(queued),
                   record.words.at(7));
}

QString Player::expectNothing(const TraceRecord &record)
{
    // With no other call between, the first few empty the lists of what cannot be sent and let the
    // next kind of request have its turn; from then on nothing changes.
    constexpr int ENOUGH = 64;
    for (int i = 0; i < std::min(record.number(0), ENOUGH); ++i) {
        const Protocol *frame = api_.ComCommunication();
        if (frame != nullptr)
            return compare(QStringLiteral("next frame"), askedText(frame), askedText(nullptr));
    }
    ++calls_;
    return QString();
}

QString Player::ask(const TraceRecord &record)
{
    const Protocol *frame = api_.ComCommunication();
    asked_ = frame != nullptr ? frame->frame : QByteArray();
    return compare(QStringLiteral("next frame and length of its reply"), askedText(frame),
                   record.words.at(0) + ' ' + record.words.at(1));
}

QString Player::compareSent(const TraceRecord &record)
{
    received_.clear();
    return compare(QStringLiteral("frame to be sent"), traceHex(asked_), record.words.at(0));
}

QString Player::collect(const TraceRecord &record)
{
    received_ += record.bytes(0);
    return QString();
}

QString Player::judge(const TraceRecord &record)
{
    QByteArray reply = record.bytes(0);
    if (!received_.contains(reply))
        return QStringLiteral("the reply %1 is not among the bytes received, %2")
            .arg(QString::fromLatin1(traceHex(reply)), QString::fromLatin1(traceHex(received_)));
    const RW_VAR *judged = api_.DataCom(&reply, reply.size());
    return compare(QStringLiteral("result, area, station, address and requester"),
                   judgedText(*judged), record.words.mid(1).join(' '));
}

QString Player::compareValue(const TraceRecord &record)
{
    QByteArray value;
    const int known = api_.GetRegisterData(QString(), record.number(0), record.text(2),
                                           record.number(1), value, record.number(3));
    return compare(
        QStringLiteral("value of %1 at station %2").arg(record.text(2)).arg(record.number(1)),
        QByteArray::number(known) + ' ' + traceHex(value),
        record.words.at(4) + ' ' + record.words.at(5));
}

QString Player::compare(const QString &what, const QByteArray &now, const QByteArray &recorded)
{
    ++calls_;
    if (now == recorded)
        return QString();
    return QStringLiteral("%1: the driver now gives %2, recorded is %3")
        .arg(what, QString::fromLatin1(now), QString::fromLatin1(recorded));
}

} // namespace

ReplayResult replayTrace(TraceReader *reader, const DriverApi &api)
{
    ReplayResult result;
    Player player(api);
    TraceRecord record;
    while (result.difference.isEmpty() && !result.isCut && reader->next(&record)) {
        if (record.is(trace::CONTINUED)) {
            result.error = QStringLiteral("it begins in the middle of a run, whose beginning has "
                                          "made room: it can be decoded, not replayed");
            return result;
        }
        const QString difference = player.play(record);
        if (!difference.isEmpty())
            result.difference = QStringLiteral("exchange %1 (line %2): %3")
                                    .arg(record.exchange)
                                    .arg(record.line)
                                    .arg(difference);
        result.exchanges = record.exchange;
        result.isCut = record.is(trace::LOST);
    }
    result.calls = player.calls();
    result.error = reader->error();
    return result;
}

} // namespace kvt
