#include "host/trace_recorder.h"

#include "host/trace_format.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace kvt
{

namespace
{

constexpr const char *DROP_NAMES[] = {"stale", "late", "echo"};
constexpr const char *END_NAMES[] = {"replied",   "refused", "noreply",
                                     "brokenoff", "foreign", "disturbed"};

// The driver's entry points are plain functions, so what they record to cannot be handed to them.
TraceRecorder *recorder = nullptr;

template <typename... Words>
QByteArray record(const char *name, const Words &...words)
{
    QByteArray text(name);
    ((text += ' ', text += words), ...);
    return text;
}

QByteArray number(int value)
{
    return QByteArray::number(value);
}

} // namespace

/// The entry points that record. Each notes first what the driver will see, then what it returned.
struct RecordedCalls {
    static void setComInfo(ComInfo *info) noexcept
    {
        recorder->driver_.SetComInfo(info);
        const std::lock_guard<std::mutex> lock(recorder->mutex_);
        recorder->info_ = info;
        recorder->infoWritten_ = false;
    }

    static int flashLocalRegister(void *lb, void *lw, void *rwi) noexcept
    {
        const int result = recorder->driver_.FlashLocalRegister(lb, lw, rwi);
        const std::lock_guard<std::mutex> lock(recorder->mutex_);
        recorder->localWords_ = static_cast<const quint16 *>(lw);
        return result;
    }

    static int reCreatReadVarList(QList<HOST_VAR> *list) noexcept
    {
        recorder->noteInfo();
        const int result = recorder->driver_.ReCreatReadVarList(list);
        for (const HOST_VAR &var : list != nullptr ? *list : QList<HOST_VAR>())
            recorder->add(record(trace::VARIABLE, number(var.areaType), number(var.station),
                                 traceText(var.addressText)));
        recorder->add(record(trace::LIST, number(result)));
        return result;
    }

    static void enCommStation(int station, int mode) noexcept
    {
        recorder->driver_.EnCommStation(station, mode);
        recorder->add(record(trace::STATION, number(station), number(mode)));
    }

    static int setRegisterData(QString name, int kind, QString addressText, int station,
                               QByteArray &value, int count, int ownerId, int ownerSubId) noexcept
    {
        recorder->noteInfo();
        const QByteArray call =
            record(trace::WRITE, number(kind), number(station), traceText(addressText),
                   number(count), number(ownerId), number(ownerSubId), traceHex(value));
        const int result =
            recorder->driver_.SetRegisterData(std::move(name), kind, std::move(addressText),
                                              station, value, count, ownerId, ownerSubId);
        recorder->add(record(call.constData(), number(result)));
        return result;
    }

    static int addListOnceReadVar(RW_VAR *var, int mode) noexcept
    {
        recorder->noteInfo();
        const int result = recorder->driver_.AddListOnceReadVar(var, mode);
        if (var != nullptr)
            recorder->add(record(trace::ONCE, number(var->areaType), number(var->station),
                                 traceText(var->addressText), number(var->plcNo),
                                 number(var->ownerId), number(var->ownerSubId), number(mode),
                                 number(result)));
        return result;
    }

    static Protocol *comCommunication() noexcept
    {
        recorder->noteInfo();
        recorder->noteLocalWord();
        Protocol *frame = recorder->driver_.ComCommunication();
        if (frame == nullptr)
            recorder->noteNothing();
        else
            recorder->add(
                record(trace::ASK, traceHex(frame->frame), number(frame->expectedReplyLength)));
        return frame;
    }

    static RW_VAR *dataCom(QByteArray *received, int receivedLength) noexcept
    {
        recorder->noteInfo();
        const QByteArray reply =
            received != nullptr ? received->left(receivedLength) : QByteArray();
        RW_VAR *judged = recorder->driver_.DataCom(received, receivedLength);
        const std::lock_guard<std::mutex> lock(recorder->mutex_);
        // The driver counts the retries in the host's block: this change is its own.
        if (recorder->info_ != nullptr)
            recorder->lastInfo_ = *recorder->info_;
        recorder->addLocked(record(trace::JUDGED, traceHex(reply), number(judged->result),
                                   number(judged->areaType), number(judged->station),
                                   number(judged->address), number(judged->ownerSubId)));
        return judged;
    }

    static int getRegisterData(QString name, int kind, QString addressText, int station,
                               QByteArray &out, int count) noexcept
    {
        const QByteArray call = record(trace::VALUE, number(kind), number(station),
                                       traceText(addressText), number(count));
        const int result = recorder->driver_.GetRegisterData(
            std::move(name), kind, std::move(addressText), station, out, count);
        recorder->add(record(call.constData(), number(result), traceHex(out)));
        return result;
    }
};

TraceRecorder::TraceRecorder(TraceWriter::Clock clock, Outlet::WhenFull whenFull)
    : writer_(std::move(clock), whenFull)
{
}

TraceRecorder::~TraceRecorder()
{
    if (recorder == this)
        recorder = nullptr;
}

bool TraceRecorder::open(const QString &path, QString *error, qint64 limit_bytes,
                         TraceNotice notice)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return writer_.open(path, limit_bytes, std::move(notice), error);
}

void TraceRecorder::close(qint64 timeout_ns)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    writeNothing();
    writer_.close(timeout_ns);
}

DriverApi TraceRecorder::attach(const DriverApi &api)
{
    driver_ = api;
    recorder = this;
    DriverApi recorded = api;
    recorded.SetComInfo = RecordedCalls::setComInfo;
    recorded.FlashLocalRegister = RecordedCalls::flashLocalRegister;
    recorded.ReCreatReadVarList = RecordedCalls::reCreatReadVarList;
    recorded.EnCommStation = RecordedCalls::enCommStation;
    recorded.SetRegisterData = RecordedCalls::setRegisterData;
    recorded.AddListOnceReadVar = RecordedCalls::addListOnceReadVar;
    recorded.ComCommunication = RecordedCalls::comCommunication;
    recorded.DataCom = RecordedCalls::dataCom;
    recorded.GetRegisterData = RecordedCalls::getRegisterData;
    return recorded;
}

QString TraceRecorder::problem() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return writer_.problem();
}

void TraceRecorder::bytesSent(const QByteArray &bytes)
{
    add(record(trace::SENT, traceHex(bytes)));
}

void TraceRecorder::bytesReceived(const char *bytes, int count)
{
    add(record(trace::RECEIVED, traceHex(QByteArray(bytes, count))));
}

void TraceRecorder::bytesDropped(DroppedBytes kind, int count)
{
    add(record(trace::DROPPED, DROP_NAMES[static_cast<int>(kind)], number(count)));
}

void TraceRecorder::attemptEnded(const Attempt &attempt)
{
    add(record(trace::ENDED, END_NAMES[static_cast<int>(attempt.end)], number(attempt.number)));
    // Once an exchange, so that little is lost when the machine goes down.
    const std::lock_guard<std::mutex> lock(mutex_);
    writer_.flush();
}

void TraceRecorder::lineChanged(bool up)
{
    add(record(trace::LINE, up ? "up" : "down"));
}

void TraceRecorder::add(const QByteArray &record)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    addLocked(record);
}

void TraceRecorder::addLocked(const QByteArray &text)
{
    writeNothing();
    writer_.add(text);
}

// An idle host asks a hundred times a second: that is one record for all, before the next other.
void TraceRecorder::writeNothing()
{
    if (timesNothing_ > 0)
        writer_.add(record(trace::NOTHING, number(std::exchange(timesNothing_, 0))));
}

// The host changes its block without a call; what matters is how it stands at the next one.
void TraceRecorder::noteInfo()
{
    const std::lock_guard<std::mutex> lock(mutex_);
    if (info_ == nullptr)
        return;
    QByteArray changes;
    for (const TraceInfoWord &entry : TRACE_INFO_WORDS)
        if (!infoWritten_ || info_->*entry.word != lastInfo_.*entry.word)
            changes += QByteArrayLiteral(" ") + entry.name + '=' + number(info_->*entry.word);
    lastInfo_ = *info_;
    infoWritten_ = true;
    if (!changes.isEmpty())
        addLocked(trace::INFO + changes);
}

void TraceRecorder::noteLocalWord()
{
    const std::lock_guard<std::mutex> lock(mutex_);
    if (localWords_ == nullptr || localWords_[BLOCK_SELECT_WORD] == lastLocalWord_)
        return;
    lastLocalWord_ = localWords_[BLOCK_SELECT_WORD];
    addLocked(record(trace::LOCAL, number(lastLocalWord_)));
}

void TraceRecorder::noteNothing()
{
    const std::lock_guard<std::mutex> lock(mutex_);
    ++timesNothing_;
}

} // namespace kvt
