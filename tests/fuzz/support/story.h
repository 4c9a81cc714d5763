// What happens in a run, told on stderr when KVT_FUZZ_TELL is set: for whoever looks into a
// finding.
#ifndef KVT_TESTS_FUZZ_SUPPORT_STORY_H
#define KVT_TESTS_FUZZ_SUPPORT_STORY_H

#include <QByteArray>

#include <cstdio>

inline bool isTold()
{
    static const bool told = qEnvironmentVariableIsSet("KVT_FUZZ_TELL");
    return told;
}

/// One line: the time, what it is, and its bytes.
inline void tell(qint64 now_ns, const char *what, const QByteArray &bytes = QByteArray())
{
    if (isTold())
        std::fprintf(stderr, "%10.3f ms  %s %s\n", static_cast<double>(now_ns) / 1e6, what,
                     bytes.toHex(' ').constData());
}

/// The same with a number.
inline void tell(qint64 now_ns, const char *what, int number)
{
    if (isTold())
        std::fprintf(stderr, "%10.3f ms  %s %d\n", static_cast<double>(now_ns) / 1e6, what, number);
}

#endif
