// The moving value of a tag: all its elements change at once, whether anybody reads them or not.
#ifndef KVT_SIMULATOR_TAG_SIGNAL_H
#define KVT_SIMULATOR_TAG_SIGNAL_H

#include "simulator/signal.h"
#include "tags/tag.h"

#include <QVector>

namespace kvt
{

/// How a tag's value moves. Empty texts ask for what its type allows.
struct SignalRule {
    SignalKind kind = SignalKind::Mixed;
    QString low; ///< as the tag's value is entered
    QString high;
    qint64 period_ns = 0; ///< from one course to the next; 0: a minute
};

/// Says what is wrong with a rule for a tag, or returns an empty text.
QString signalFault(const SignalRule &rule, const Tag &tag);

/// Moves with the time that it is told, which never goes back. Not for the kinds Serial and Mixed.
/// Not thread-safe.
class TagSignal
{
public:
    /// `start` chooses where in its course the value begins. The rule is without fault.
    TagSignal(const Tag &tag, const SignalRule &rule, quint32 start, quint64 seed);

    /// Returns the elements at a time.
    const QVector<quint16> &elements(qint64 time_ns);

    /// Returns them as they were last.
    const QVector<quint16> &elements() const { return elements_; }

private:
    void show(int position);

    ValueForm form_;
    Area area_;
    Signal signal_;
    quint64 lowBits_ = 0;
    quint64 highBits_ = 0;
    qint64 stepTime_ns_;
    qint64 step_ = 0;
    QVector<quint16> elements_;
};

} // namespace kvt

#endif
