// A line to the PLC: a file descriptor that opens, breaks and opens again.
#ifndef KVT_HOST_LINE_H
#define KVT_HOST_LINE_H

#include <QByteArray>
#include <QString>

namespace kvt
{

/// How far the opening of a line has come.
enum class Opening {
    Done,    ///< the line can be used
    Pending, ///< call `finishOpening` once `openingEvents` have come to the descriptor
    Failed   ///< not now; try again later
};

/// One line. Nothing here waits for the line; every call is from one thread.
class Line
{
public:
    Line() = default;
    virtual ~Line();
    Line(const Line &) = delete;
    Line &operator=(const Line &) = delete;

    /// Begins to open the line, which is closed. Failed sets `*error` (not null).
    virtual Opening open(QString *error) = 0;

    /// What a Pending opening waits for at the descriptor: POLLIN or POLLOUT.
    virtual short openingEvents() const;

    /// Goes on with an opening that was Pending, and may be so again.
    virtual Opening finishOpening(QString *error);

    /// A Pending opening has taken too long: goes on with the next way there is, if any.
    virtual Opening giveUpOpening(QString *error);

    /// Closes the line; harmless when it is closed.
    void close();

    /// The descriptor to poll; -1 while closed.
    int descriptor() const { return descriptor_; }

    /// Writes all of `bytes`. False means that the line is of no use any more: it is gone, or
    /// takes not even the few bytes of a request.
    virtual bool write(const QByteArray &bytes);

    /// Reads what has arrived, at most `size` bytes: their number, 0 when there are none now, -1
    /// when the line is gone.
    int read(char *buffer, int size);

    /// Time that one character takes in the line's time-outs and utilisation, in nanoseconds; 0
    /// for a line that has no speed.
    virtual qint64 characterTime_ns() const = 0;

    /// True when bytes leave and arrive at that pace; false when they are handed over at once.
    /// Asked while the line is open.
    virtual bool isPaced() const = 0;

    /// What the line is, for a log: "/dev/ttyS0" or "192.168.0.7:4001".
    virtual QString name() const = 0;

protected:
    void setDescriptor(int descriptor) { descriptor_ = descriptor; }

private:
    int descriptor_ = -1;
};

/// The text of the latest system error of this thread, e.g. "No such device".
QString systemError();

} // namespace kvt

#endif
