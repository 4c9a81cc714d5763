// Values that move: what a cell answers from one read to the next.
#ifndef KVT_SIMULATOR_SIGNAL_H
#define KVT_SIMULATOR_SIGNAL_H

#include "simulator/random.h"

namespace kvt
{

/// How a value moves with every read.
enum class SignalKind {
    Constant,   ///< never
    Counter,    ///< up by one, from the lowest value again after the highest
    Ramp,       ///< up in a hundred steps, then from the lowest value again
    Sine,       ///< once around its range in 64 steps
    RandomWalk, ///< up or down by at most a sixteenth of its range
    Serial,     ///< a number that no other serial cell of the same width is given; see SerialLedger
    Step,       ///< the lowest and the highest value by turns
    Mixed       ///< the first five by turns, one kind per cell
};

/// Returns the steps of one course of a kind.
int stepsOf(SignalKind kind);

/// Range of a value, both ends included; `lowest` is less than `highest`.
struct SignalRange {
    int lowest = 0;
    int highest = 65535;
};

/// The moving value of one cell. Not for the kinds Serial and Mixed. Not thread-safe.
class Signal
{
public:
    /// `start` chooses the first value, which differs from cell to cell: the constant, or where in
    /// its course the value begins.
    Signal(SignalKind kind, SignalRange range, quint32 start, quint64 seed);

    /// Returns the value of the next read, within the range.
    int next();

private:
    int span() const { return range_.highest - range_.lowest + 1; }
    int ramp() const;
    int sine() const;
    int walk();

    SignalKind kind_;
    SignalRange range_;
    quint32 step_;
    int position_;
    Random random_;
};

} // namespace kvt

#endif
