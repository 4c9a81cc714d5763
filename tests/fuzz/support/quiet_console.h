// The console of kvt, kept instead of printed.
#ifndef KVT_TESTS_FUZZ_SUPPORT_QUIET_CONSOLE_H
#define KVT_TESTS_FUZZ_SUPPORT_QUIET_CONSOLE_H

#include <QString>

/// The messages since the last call, each with a line end.
QString takePrintedErrors();

#endif
