// Rows of test data whose names are made of their values. QTest::addRow came after Qt 4.8.
#ifndef KVT_TESTS_SUPPORT_ROW_NAMES_H
#define KVT_TESTS_SUPPORT_ROW_NAMES_H

#include <QtTest>

#include <cstdarg>
#include <cstdio>

QTestData &formattedRow(const char *format, ...) __attribute__((format(printf, 1, 2)));

/// Starts a row of test data; `format` and what follows are those of printf and make its name, of
/// which the first 255 bytes are kept.
inline QTestData &formattedRow(const char *format, ...)
{
    char name[256];
    va_list values;
    va_start(values, format);
    std::vsnprintf(name, sizeof name, format, values);
    va_end(values);
    return QTest::newRow(name);
}

#endif
