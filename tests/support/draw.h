// Random draws for comparisons of the driver with plain models of it: the same in every run.
#ifndef KVT_TESTS_SUPPORT_DRAW_H
#define KVT_TESTS_SUPPORT_DRAW_H

#include <QByteArray>
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
    explicit Draw(unsigned seed) : random_(seed) { qDebug() << "seed" << seed; }

    /// A number from 0 to `limit` - 1.
    int below(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }

    /// True once in `times`.
    bool onceIn(int times) { return below(times) == 0; }

    /// So many bytes.
    QByteArray bytes(int count)
    {
        QByteArray result;
        for (int i = 0; i < count; ++i)
            result.append(static_cast<char>(below(256)));
        return result;
    }

    /// One of the values in a C array.
    template <typename Value, int Size>
    const Value &of(const Value (&values)[Size])
    {
        return values[below(Size)];
    }

private:
    std::mt19937 random_;
};

#endif
