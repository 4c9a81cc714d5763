#include "simulator/signal.h"

namespace kvt
{

namespace
{

constexpr quint32 RAMP_STEPS = 100;
constexpr int HALF_WAVE = 32; ///< steps of half a sine wave

} // namespace

int stepsOf(SignalKind kind)
{
    if (kind == SignalKind::Step)
        return 2;
    return kind == SignalKind::Sine ? 2 * HALF_WAVE : static_cast<int>(RAMP_STEPS);
}

Signal::Signal(SignalKind kind, SignalRange range, quint32 start, quint64 seed)
    : kind_(kind), range_(range), step_(start),
      position_(static_cast<int>(start % static_cast<quint32>(range.highest - range.lowest + 1))),
      random_(seed)
{
}

int Signal::next()
{
    const quint32 count = static_cast<quint32>(span());
    int offset = 0;
    switch (kind_) {
    case SignalKind::Constant:
    case SignalKind::Serial:
    case SignalKind::Mixed:
        offset = position_;
        break;
    case SignalKind::Counter:
        offset = static_cast<int>(step_ % count);
        break;
    case SignalKind::Ramp:
        offset = ramp();
        break;
    case SignalKind::Sine:
        offset = sine();
        break;
    case SignalKind::RandomWalk:
        offset = walk();
        break;
    case SignalKind::Step:
        offset = step_ % 2 == 0 ? 0 : span() - 1;
        break;
    }
    ++step_;
    return range_.lowest + offset;
}

int Signal::ramp() const
{
    const quint32 position = step_ % RAMP_STEPS;
    return static_cast<int>(position * static_cast<quint32>(span() - 1) / (RAMP_STEPS - 1));
}

// Bhaskara's rational approximation, good to 0.2 % of the amplitude, in whole numbers: a library's
// sine may differ in its last bit from one machine to the next.
int Signal::sine() const
{
    const int phase = static_cast<int>(step_ % (2 * HALF_WAVE));
    const int x = phase % HALF_WAVE;
    const int product = x * (HALF_WAVE - x);
    const int amplitude = (span() - 1) / 2;
    const int height = static_cast<int>(Q_INT64_C(16) * product * amplitude /
                                        (5 * HALF_WAVE * HALF_WAVE - 4 * product));
    const int middle = span() / 2;
    return phase < HALF_WAVE ? qMin(middle + height, span() - 1) : qMax(middle - height, 0);
}

int Signal::walk()
{
    const int reach = qMax(1, span() / 16);
    const int move = static_cast<int>(random_.below(static_cast<quint32>(2 * reach + 1))) - reach;
    position_ = qBound(0, position_ + move, span() - 1);
    return position_;
}

} // namespace kvt
