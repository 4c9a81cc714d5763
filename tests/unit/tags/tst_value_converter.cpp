// Engineering values: what is shown for bits, and the bits of what is entered.
#include "tags/value_converter.h"

#include "tags/number_text.h"

#include <QLocale>
#include <QtTest>

#include <clocale>
#include <cmath>

using namespace kvt;

namespace
{

/// Reads "scale=0.1 offset=-40 unit=bar", parted by blanks.
MeaningTexts textsOf(const QString &text)
{
    MeaningTexts texts;
    for (const QString &part : text.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        for (int i = 0; i < MEANING_COLUMNS; ++i) {
            const auto column = static_cast<MeaningColumn>(i);
            if (part.section(QLatin1Char('='), 0, 0) == meaningColumnName(column))
                texts[column] = part.section(QLatin1Char('='), 1);
        }
    }
    return texts;
}

/// Returns all problems, one a line: column, text, and whether it is a warning.
QString shown(const QVector<MeaningProblem> &problems)
{
    QStringList lines;
    for (const MeaningProblem &problem : problems)
        lines.append(meaningColumnName(problem.column) + QStringLiteral(": ") + problem.text +
                     (problem.isWarning ? QStringLiteral(" (warning)") : QString()));
    return lines.join(QLatin1Char('\n'));
}

std::optional<ValueConverter> converterOf(const QString &type, const QString &meaning,
                                          QString *problems = nullptr)
{
    ValueForm form;
    if (!parseForm(type, &form).isEmpty())
        qFatal("%s", qPrintable(type));
    const Area area = formMisfit(form, Area::D).isEmpty() ? Area::D : Area::C;
    QVector<MeaningProblem> found;
    std::optional<ValueConverter> converter =
        ValueConverter::make(form, area, textsOf(meaning), &found);
    if (problems != nullptr)
        *problems = shown(found);
    return converter;
}

/// Goes through raw values of a type. Says for which one what is shown is not entered as the same.
QString roundTripFault(const ValueConverter &converter, quint64 values)
{
    for (quint64 bits = 0; bits < values; ++bits) {
        const QString text = converter.text(bits);
        if (text.isNull())
            continue; // BCD that is none
        const EnteredValue back = converter.enter(text);
        if (!back.error.isEmpty() || back.bits != bits)
            return QStringLiteral("%1 is shown as %2 and comes back as %3 %4")
                .arg(QString::number(bits), text, QString::number(back.bits), back.error);
    }
    return QString();
}

} // namespace

class TestValueConverter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        // A German machine: nothing of it may show.
        QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
        for (const char *name : {"de_DE.UTF-8", "de_DE", "fr_FR.UTF-8"})
            if (std::setlocale(LC_ALL, name) != nullptr)
                break;
    }

    void bitsAreShownAndEntered_data()
    {
        QTest::addColumn<QString>("type");
        QTest::addColumn<QString>("meaning");
        QTest::addColumn<quint64>("bits");
        QTest::addColumn<QString>("text");
        const auto row = [](const char *type, const char *meaning, quint64 bits, const char *text) {
            QTest::addRow("%s %s %llX", type, meaning, bits)
                << QString(type) << QString(meaning) << bits << QString(text);
        };
        row("bool", "", 1, "1");
        row("bool", "labels=0=shut;1=open", 1, "open");
        row("bit:3", "labels=0=ok;1=fault", 0, "ok");
        row("u8", "", 255, "255");
        row("s8", "", 0x80, "-128");
        row("hex", "", 0xA0B, "0x0A0B");
        row("s16", "", 0xFFFF, "-1");
        row("s16", "scale=0.1", 214, "21.4");
        row("s16", "scale=0.1", 0xFFFB, "-0.5");
        row("s16", "scale=0.1", 210, "21.0");
        row("s16", "scale=0.1", 0, "0.0");
        row("u16", "scale=0.01 offset=-40", 0, "-40.00");
        row("u16", "scale=0.01 offset=-40", 6140, "21.40");
        row("u16", "scale=0.01 offset=-40 decimals=1", 6145, "21.5"); // 21.45
        row("u16", "scale=-0.5 offset=100", 1, "99.5");
        row("u16", "scale=10", 7, "70");
        row("u16", "scale=1e3", 7, "7000");
        row("u16", "scale=0.125", 3, "0.375");
        row("u16", "scale=0.125 decimals=5", 3, "0.37500");
        row("u16", "decimals=2", 5, "5.00");
        row("u16", "raw_low=0 raw_high=27648 low=0 high=100", 13824, "50.000");
        row("u16", "raw_low=0 raw_high=27648 low=0 high=100", 1, "0.004"); // 0.0036...
        row("s16", "raw_low=4000 raw_high=20000 low=-50 high=150", 12000, "50.0000");
        row("s16", "raw_low=4000 raw_high=20000 low=150 high=-50", 4000, "150.0000");
        row("u32", "scale=0.001", 4294967295U, "4294967.295");
        row("s32", "scale=0.25", 0xFFFFFFFF, "-0.25");
        row("u64", "", 18446744073709551615U, "18446744073709551615");
        row("u64", "scale=0.001", 18446744073709551615U, "18446744073709551.615");
        row("s64", "scale=0.3", 0x8000000000000000U, "-2767011611056432742.4");
        row("bcd16", "", 0x1234, "1234");
        row("bcd16", "scale=0.1", 0x0999, "99.9");
        row("bcd32", "", 0x12345678, "12345678");
        row("f32", "", 0x41AB3333, "21.4");
        row("f32", "decimals=2", 0x41AB3333, "21.40");
        row("f32", "scale=1000", 0x3DCCCCCD, "100");
        row("f32", "scale=0.1", 0x40400000, "0.3");
        row("f32", "", 0x80000000, "-0");
        row("f32", "scale=10", 0x80000000, "-0");
        row("f32", "scale=-1", 0x7F800000, "-inf");
        row("f32", "scale=10 decimals=1", 0x7FC00001, "nan(0x7FC00001)");
        row("f32", "decimals=1", 0x7149F2CA, "1e+30");
        row("f64", "scale=0.1", 0x4008000000000000, "0.3");
        row("u8", "labels=0=off;1=manual;2=automatic", 2, "automatic");
        row("u8", "labels=0=off;1=manual;2=automatic", 7, "7");
        row("u8", "labels=255=fault scale=0.5", 255, "fault");
        row("u8", "labels=255=fault scale=0.5", 3, "1.5");
        row("hex", "bits=0=door;3=dry", 9, "door, dry");
    }

    void bitsAreShownAndEntered()
    {
        QFETCH(QString, type);
        QFETCH(QString, meaning);
        QFETCH(quint64, bits);
        QFETCH(QString, text);
        QString problems;
        const std::optional<ValueConverter> converter = converterOf(type, meaning, &problems);
        QVERIFY2(converter, qPrintable(problems));
        QCOMPARE(converter->text(bits), text);
        if (meaning.contains(QLatin1String("decimals=1")) && text == QLatin1String("21.5"))
            return; // 21.45 has lost its last digit
        const EnteredValue back = converter->enter(text);
        QCOMPARE(back.error, QString());
        QCOMPARE(back.bits, bits);
    }

    void whatCannotBeHadIsRefused_data()
    {
        QTest::addColumn<QString>("type");
        QTest::addColumn<QString>("meaning");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("error");
        const auto row = [](const char *type, const char *meaning, const char *text,
                            const char *error) {
            QTest::addRow("%s %s %s", type, meaning, text)
                << QString(type) << QString(meaning) << QString(text) << QString(error);
        };
        row("u8", "", "", "a value is missing");
        row("u8", "unit=bar", " bar ", "\"bar\" is not a u8 value");
        row("u8", "", "300", "300 does not fit u8 (0 to 255); the nearest is 255");
        row("s16", "scale=0.1", "21.43", "21.43 cannot be had exactly; the nearest is 21.4");
        row("s16", "scale=0.3", "1", "1 cannot be had exactly; the nearest is 0.9");
        row("s16", "scale=0.1", "21,4", "\"21,4\" has a comma where a point is needed");
        row("s16", "scale=0.1", "x", "\"x\" is not a number");
        row("s16", "scale=0.1", "0x10",
            "\"0x10\" is not a number; hexadecimal is for values without scale and decimals");
        row("u32", "", "1.5", "1.5 cannot be had exactly; the nearest is 1");
        row("u32", "", "1.6", "1.6 cannot be had exactly; the nearest is 2");
        row("u32", "", "1,5", "\"1,5\" has a comma where a point is needed");
        row("s16", "scale=0.1", "7000",
            "7000 does not fit s16 (-3276.8 to 3276.7); the nearest is 3276.7");
        row("s16", "scale=0.1", "-1e30",
            "-1e30 does not fit s16 (-3276.8 to 3276.7); the nearest is -3276.8");
        row("u16", "scale=-1", "1", "1 does not fit u16 (-65535 to 0); the nearest is 0");
        row("u16", "scale=0.1 min=0 max=100", "100.1",
            "100.1 is above max, which is 100; the nearest is 100");
        row("u16", "min=5", "4", "4 is below min, which is 5; the nearest is 5");
        row("u8", "labels=0=off;1=on max=0", "on", "on is above max, which is 0; the nearest is 0");
        row("u8", "labels=0=off;1=manual", "manul",
            "\"manul\" is not a u8 value; the labels are \"manual\", \"off\"");
        row("u8", "scale=0.5 labels=0=off;1=manual", "auto",
            "\"auto\" is not a number; the labels are \"off\", \"manual\"");
        row("u8", "labels=0=off;1=manual", "300",
            "300 does not fit u8 (0 to 255); the nearest is 255");
        row("hex", "bits=0=door;3=dry;5=hot", "dry,Doors",
            "\"dry,Doors\" is not a hex value; the bits are \"door\", \"dry\", \"hot\"");
        row("bool", "", "ein", "\"ein\" is not a bool value (0, 1, off, on, false or true)");
        row("u16", "unit=A", "5 mA", "\"5 mA\" is not a u16 value");
        row("u16", "unit=1/min", "15001/min", "\"15001/min\" is not a u16 value");
        row("bcd16", "", "10000", "10000 does not fit bcd16 (0 to 9999); the nearest is 9999");
        row("bcd16", "", "-1", "-1 does not fit bcd16 (0 to 9999); the nearest is 0");
        row("f32", "max=1.5", "1.6", "1.6 is above max, which is 1.5; the nearest is 1.5");
        row("f32", "max=1.5", "nan", "nan is no number, and lies in no limits");
        row("f32", "max=1.5", "inf", "inf is above max, which is 1.5; the nearest is 1.5");
        row("f32", "scale=10", "1e40", "1e40 does not fit f32; the nearest is 3.40282347e+39");
        row("u16", "scale=0.1", "1.00000000000000000000000000001",
            "1.00000000000000000000000000001 cannot be had exactly; the nearest is 1.0");
        row("u16", "scale=0.1", "1.0000000000000000000000000000001",
            "1.0000000000000000000000000000001 has more digits than can be reckoned with (36, 30 "
            "of "
            "them decimals)");
    }

    void whatCannotBeHadIsRefused()
    {
        QFETCH(QString, type);
        QFETCH(QString, meaning);
        QFETCH(QString, text);
        const std::optional<ValueConverter> converter = converterOf(type, meaning);
        QVERIFY(converter);
        QTEST(converter->enter(text).error, "error");
    }

    void enteredTextsMayBeWrittenOtherwise_data()
    {
        QTest::addColumn<QString>("type");
        QTest::addColumn<QString>("meaning");
        QTest::addColumn<QString>("text");
        QTest::addColumn<quint64>("bits");
        const auto row = [](const char *type, const char *meaning, const char *text, quint64 bits) {
            QTest::addRow("%s %s %s", type, meaning, text)
                << QString(type) << QString(meaning) << QString::fromUtf8(text) << bits;
        };
        row("s16", "scale=0.1 unit=bar", "21.4 bar", 214);
        row("s16", "scale=0.1 unit=%", " 21.40% ", 214);
        row("s16", "scale=0.1", "2.14e1", 214);
        row("u16", "unit=1/min", "1500 1/min", 1500);
        row("u16", "unit=1/min", "0x10", 16);
        row("hex", "", "a", 10);
        row("bool", "labels=0=shut;1=open", "OPEN", 1);
        row("bool", "labels=0=shut;1=open", "on", 1);
        row("hex", "bits=0=door;3=dry", "0x9", 9);
        row("hex", "bits=0=door;3=dry", "none", 0);
        row("u16", "raw_low=0 raw_high=27648 low=0 high=100 decimals=1", "51", 14100);
        row("s16", "scale=0.25 decimals=0", "0.25", 1); // what it is, though not what it shows
        row("f32", "", "3.14159265358979", 0x40490FDB);
        row("u32", "", "1e3", 1000);
        row("bcd16", "", "12.0", 0x12);
        row("s16", "unit=V labels=-1=zero;1=Step-V", "step-V", 1);
        row("u16", "unit=Stk", "5Stk", 5);
        row("u16", "unit=F", "0x1F", 31);
        row("u16", "unit=F", "0x1 F", 1);
        row("u16", "scale=100 unit=e2", "5e2", 5);
        row("f32", "unit=m", "5m", 0x40A00000);
    }

    void enteredTextsMayBeWrittenOtherwise()
    {
        QFETCH(QString, type);
        QFETCH(QString, meaning);
        QFETCH(QString, text);
        const std::optional<ValueConverter> converter = converterOf(type, meaning);
        QVERIFY(converter);
        const EnteredValue entered = converter->enter(text);
        QCOMPARE(entered.error, QString());
        QTEST(entered.bits, "bits");
    }

    void wrongColumnsAreNamed_data()
    {
        QTest::addColumn<QString>("type");
        QTest::addColumn<QString>("meaning");
        QTest::addColumn<QString>("problems");
        const auto row = [](const char *type, const char *meaning, const char *problems) {
            QTest::addRow("%s %s", type, meaning)
                << QString(type) << QString(meaning) << QString(problems);
        };
        row("u16", "scale=x offset=1,5",
            "scale: \"x\" is not a number\noffset: \"1,5\" has a comma where a point is needed");
        row("u16", "scale=0", "scale: 0 makes all values one");
        row("u64", "scale=1e20",
            "scale: values of type u64 would have too many digits to be "
            "reckoned with exactly");
        row("u16", "scale=1e35 offset=1e-30",
            "scale: scale and offset have too many digits to be reckoned with exactly");
        row("u16", "raw_low=0 low=0 high=1",
            "raw_high: is missing: raw_low, raw_high, low and high go together");
        row("u16", "raw_low=5 raw_high=5.0 low=0 high=1", "raw_high: is equal to raw_low");
        row("u16", "raw_low=0 raw_high=5 low=1 high=1", "high: is equal to low");
        row("u16", "scale=2 raw_low=0 raw_high=5 low=1 high=2",
            "scale: a value has either scale and offset or raw_low, raw_high, low and high");
        for (const char *decimals : {"-1", "16", "1.5"})
            QTest::newRow(decimals)
                << "u16" << QStringLiteral("decimals=%1").arg(QString(decimals))
                << QStringLiteral("decimals: \"%1\" is no number of decimals (0 "
                                  "to 15)")
                       .arg(QString(decimals));
        row("u16", "min=2 max=1", "max: 1 is below min, which is 2");
        row("hex", "scale=2 unit=bar min=1",
            "scale: values of type hex have none\nmin: values of type hex have none\n"
            "unit: values of type hex have none");
        row("f32", "labels=0=off", "labels: values of type f32 have none");
        row("s16", "bits=0=off", "bits: values of type s16 have none");
        row("string:4", "labels=0=off", "labels: values of type string have none");
        row("u16", "labels=0=off bits=0=off", "bits: a value has either labels or bits");
        row("u16", "labels=0", "labels: \"0\" is not a number, = and a name");
        row("u16", "bits=16=x", "bits: \"16\" is no bit of u16 (0 to 15)");
    }

    void wrongColumnsAreNamed()
    {
        QFETCH(QString, type);
        QFETCH(QString, meaning);
        QString problems;
        QVERIFY(!converterOf(type, meaning, &problems));
        QTEST(problems, "problems");
    }

    void doubtfulColumnsAreWarnedOf()
    {
        QString problems;
        QVERIFY(
            converterOf(QStringLiteral("u16"), QStringLiteral("scale=0.01 decimals=1"), &problems));
        QCOMPARE(problems, QString("decimals: 1 decimal shows different raw values as one; 2 would "
                                   "not (warning)"));
        QVERIFY(converterOf(QStringLiteral("u16"), QStringLiteral("scale=1e-30"), &problems));
        QCOMPARE(problems, QString("scale: 15 decimals show different raw values as one; more are "
                                   "not to be had (warning)"));
        QVERIFY(converterOf(QStringLiteral("u8"), QStringLiteral("scale=-0.1 min=-26 max=1"),
                            &problems));
        QCOMPARE(problems, QString("min: -26 is beyond all values (-25.5 to 0.0) (warning)\n"
                                   "max: 1 is beyond all values (-25.5 to 0.0) (warning)"));
    }

    void digitsThatAreNoneAreNoValue()
    {
        const std::optional<ValueConverter> plain = converterOf("bcd16", "");
        const std::optional<ValueConverter> scaled = converterOf("bcd32", "scale=0.1");
        NumberText text;
        QVERIFY(!plain->appendNumber(0x12A4, &text));
        QVERIFY(!scaled->appendNumber(0xA2345678, &text));
        QCOMPARE(text.size(), 0);
        QVERIFY(plain->text(0xFFFF).isNull());
        QVERIFY(!plain->number(0x000F));
        QCOMPARE(*plain->number(0x0009), 9.0);
    }

    void numbersForOthersAreDoubles()
    {
        QCOMPARE(*converterOf("s16", "scale=0.1")->number(0xFFFF), -0.1);
        QCOMPARE(*converterOf("u64", "scale=0.001")->number(~quint64(0)), 18446744073709551.615);
        QVERIFY(std::isnan(*converterOf("f32", "scale=2")->number(0x7FC00000)));
        QCOMPARE(*converterOf("bool", "labels=1=on")->number(1), 1.0);
    }

    void elementsAreShownAndEntered()
    {
        const std::optional<ValueConverter> text = converterOf("string:5", "");
        quint16 words[3] = {0x5055, 0x4D50, 0x0000};
        QCOMPARE(text->textOf(words), QString("PUMP"));
        QCOMPARE(text->enterInto(QStringLiteral("OFF"), words), QString());
        QCOMPARE(words[0], quint16(0x4F46));
        QCOMPARE(words[1], quint16(0x4600));
        QCOMPARE(text->enterInto(QStringLiteral("PUMP 12"), words),
                 QString("\"PUMP 12\" has 7 bytes, and 5 fit; \"PUMP \" would do"));
        QCOMPARE(words[0], quint16(0x4F46));
        const std::optional<ValueConverter> number = converterOf("s32", "scale=0.1");
        QCOMPARE(number->enterInto(QStringLiteral("-0.1"), words), QString());
        QCOMPARE(words[1], quint16(0xFFFF));
        QCOMPARE(number->textOf(words), QString("-0.1"));
        const std::optional<ValueConverter> bit = converterOf("bit:4", "labels=1=dry");
        words[0] = 0x0102;
        QCOMPARE(bit->enterInto(QStringLiteral("dry"), words), QString());
        QCOMPARE(words[0], quint16(0x0112));
    }

    void everyWordComesBackFromItsText_data()
    {
        QTest::addColumn<QString>("type");
        QTest::addColumn<QString>("meaning");
        const char *const meanings[] = {"",
                                        "scale=0.1",
                                        "scale=0.1 decimals=3",
                                        "scale=-0.01 offset=12.5",
                                        "scale=0.3",
                                        "scale=7 offset=-0.5 decimals=0",
                                        "scale=0.1 offset=0.05 decimals=1",
                                        "scale=0.1 offset=0.05 decimals=1 unit=bar",
                                        "scale=1 offset=-0.5 decimals=0",
                                        "raw_low=0 raw_high=27648 low=0 high=100",
                                        "raw_low=-7 raw_high=3 low=100 high=-3.3",
                                        "raw_low=0 raw_high=4095 low=4 high=20 decimals=3",
                                        "scale=1e-15",
                                        "scale=123456.789",
                                        "offset=1000000000"};
        for (const char *type : {"u8", "s8", "u16", "s16", "bcd16"})
            for (const char *meaning : meanings)
                QTest::addRow("%s %s", type, meaning) << QString(type) << QString(meaning);
        QTest::newRow("hex") << "hex"
                             << "";
        QTest::newRow("bool") << "bool"
                              << "";
        QTest::newRow("labels") << "u16"
                                << "labels=0=off;7=manual;65535=fault";
        QTest::newRow("labels, scaled") << "s16"
                                        << "scale=0.5 labels=0=off;-7=manual";
        QTest::newRow("bits") << "hex"
                              << "bits=0=door;3=dry;15=hot";
    }

    void everyWordComesBackFromItsText()
    {
        QFETCH(QString, type);
        QFETCH(QString, meaning);
        QString problems;
        const std::optional<ValueConverter> converter = converterOf(type, meaning, &problems);
        QVERIFY(converter);
        QCOMPARE(problems, QString());
        const quint64 values = type == QLatin1String("bool")     ? 2
                               : type.endsWith(QLatin1Char('8')) ? 256
                                                                 : 65536;
        QCOMPARE(roundTripFault(*converter, values), QString());
    }
};

QTEST_GUILESS_MAIN(TestValueConverter)
#include "tst_value_converter.moc"
