// Texts from elsewhere on a terminal.
#include "apps/kvt/table/printable.h"

#include <QtTest>

using namespace kvt;

class TestPrintable : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyControlCharacterIsShown()
    {
        for (ushort code = 0; code < 0xA0; ++code) {
            if (code >= 0x20 && code < 0x7F)
                continue;
            const QString shown = QStringLiteral("\\x") + QString::number(0x100 + code, 16).mid(1);
            QCOMPARE(printable(QStringLiteral("a") + QChar(code) + QLatin1Char('b')),
                     QLatin1Char('a') + shown + QLatin1Char('b'));
        }
    }

    void whatSteersATerminalIsShown_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("shown");
        QTest::newRow("colour") << QStringLiteral("\x1b[31mred") << "\\x1b[31mred";
        QTest::newRow("title") << QStringLiteral("\x1b]0;x\x07") << "\\x1b]0;x\\x07";
        QTest::newRow("right to left") << QString(QChar(0x202E)) + "abc"
                                       << "\\u202eabc";
        QTest::newRow("isolate") << QString(QChar(0x2066)) << "\\u2066";
        QTest::newRow("line separator") << QString(QChar(0x2028)) << "\\u2028";
        QTest::newRow("half a character") << QString(QChar(0xD83D)) << QString(QChar(0xFFFD));
    }

    void whatSteersATerminalIsShown()
    {
        QFETCH(QString, text);
        QFETCH(QString, shown);
        QCOMPARE(printable(text), shown);
    }

    void ordinaryTextStaysAsItIs()
    {
        for (const QString &text :
             {QString(), QStringLiteral("pump 1 ~"), QString::fromUtf8("Wärme °C"),
              QString::fromUtf8("水温"), QString::fromUtf8("\xf0\x9f\x92\xa7")})
            QCOMPARE(printable(text), text);
    }

    void whatIsKeptStays()
    {
        QCOMPARE(printable(QStringLiteral("a\n\tb\x1b\n"), QStringLiteral("\n\t")),
                 QStringLiteral("a\n\tb\\x1b\n"));
    }

    void jsonStaysTheSameText()
    {
        const QString json =
            QStringLiteral("{\"name\":\"a") + QChar(0x9B) + QStringLiteral("31m\"}");
        QCOMPARE(printableJson(json), QStringLiteral("{\"name\":\"a\\u009b31m\"}"));
    }

    void textsAreCutAndFilledToAWidth_data()
    {
        QTest::addColumn<int>("width");
        QTest::addColumn<QString>("left");
        QTest::addColumn<QString>("right");
        QTest::newRow("0") << 0 << ""
                           << "";
        QTest::newRow("1") << 1 << "~"
                           << "~";
        QTest::newRow("4") << 4 << "lev~"
                           << "lev~";
        QTest::newRow("5") << 5 << "level"
                           << "level";
        QTest::newRow("7") << 7 << "level  "
                           << "  level";
    }

    void textsAreCutAndFilledToAWidth()
    {
        QFETCH(int, width);
        QFETCH(QString, left);
        QFETCH(QString, right);
        QCOMPARE(fitted(QStringLiteral("level"), width), left);
        QCOMPARE(fitted(QStringLiteral("level"), width, Qt::AlignRight), right);
    }
};

QTEST_GUILESS_MAIN(TestPrintable)
#include "tst_printable.moc"
