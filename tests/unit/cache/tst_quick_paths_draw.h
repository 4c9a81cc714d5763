// Random draws for the comparisons of quick paths with plain ones: the same in every run.
#ifndef KVT_TESTS_UNIT_CACHE_QUICK_PATHS_DRAW_H
#define KVT_TESTS_UNIT_CACHE_QUICK_PATHS_DRAW_H

#include <QDebug>

#include <random>

/// `count`, or a tenth of it in a build that is slow: not optimised, as that for the sanitizers, or
/// run by an emulator.
constexpr int draws(int count)
{
#if defined(__OPTIMIZE__) && !defined(KVT_FEWER_DRAWS)
    return count;
#else
    return count / 10;
#endif
}

/// Draws numbers from a seed that it prints.
class Draw
{
public:
    explicit Draw(unsigned seed) : m_random(seed) { qDebug() << "seed" << seed; }

    /// A number from 0 to `limit` - 1.
    int below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }

    /// True once in `times`.
    bool onceIn(int times) { return below(times) == 0; }

    /// One of the values in a C array.
    template <typename Value, int Size>
    const Value &of(const Value (&values)[Size])
    {
        return values[below(Size)];
    }

private:
    std::mt19937 m_random;
};

#endif
