// Limits of what may be entered: the nearest value that is offered is one that is taken.
#include "tags/value_converter.h"

#include <QtTest>

#include <random>

using namespace kvt;

namespace
{

struct Columns {
    const char *type;
    const char *scale;
    const char *offset;
    const char *decimals;
    const char *min;
    const char *max;
};

std::optional<ValueConverter> converterOf(const Columns &columns, QString *problems)
{
    ValueForm form;
    MeaningTexts texts;
    texts[MeaningColumn::Scale] = QLatin1String(columns.scale);
    texts[MeaningColumn::Offset] = QLatin1String(columns.offset);
    texts[MeaningColumn::Decimals] = QLatin1String(columns.decimals);
    texts[MeaningColumn::Min] = QLatin1String(columns.min);
    texts[MeaningColumn::Max] = QLatin1String(columns.max);
    if (!parseForm(QLatin1String(columns.type), &form).isEmpty())
        return std::nullopt;
    QVector<MeaningProblem> found;
    std::optional<ValueConverter> converter = ValueConverter::make(form, Area::C, texts, &found);
    problems->clear();
    for (const MeaningProblem &problem : found)
        *problems += meaningColumnName(problem.column) + QStringLiteral(": ") + problem.text +
                     (problem.isWarning ? QStringLiteral("\n") : QStringLiteral(" (error)\n"));
    return converter;
}

Decimal decimalOf(const QString &text)
{
    Decimal number;
    if (readDecimal(text, &number) != NumberReading::Good)
        qFatal("%s", qPrintable(text));
    return number;
}

/// How far apart two numbers are, in units of the 9th decimal.
Int128 distance(const Decimal &a, const Decimal &b)
{
    Int128 left = a.mantissa;
    Int128 right = b.mantissa;
    multiplyByTens(&left, 9 - a.places);
    multiplyByTens(&right, 9 - b.places);
    return left < right ? right - left : left - right;
}

/// Says what is wrong with the answer to an entered text: the nearest that it offers is refused, or
/// another value that is taken is nearer. `isWhole`: values are shown with all their digits.
QString faultOf(const ValueConverter &converter, bool isWhole, const QString &text)
{
    const QString error = converter.enter(text).error;
    if (error.isEmpty())
        return QString();
    const QString words = QStringLiteral("; the nearest is ");
    const int at = error.lastIndexOf(words);
    const QString offered = at < 0 ? QString() : error.mid(at + words.size());
    if (at >= 0 && !converter.enter(offered).error.isEmpty())
        return error + QStringLiteral(", and then ") + converter.enter(offered).error;
    for (quint64 bits = 0; bits < 256 && isWhole; ++bits) {
        const QString other = converter.text(bits);
        if (!converter.enter(other).error.isEmpty())
            continue;
        if (at < 0 || distance(decimalOf(other), decimalOf(text)) <
                          distance(decimalOf(offered), decimalOf(text)))
            return QStringLiteral("%1, but %2 is nearer").arg(error, other);
    }
    return QString();
}

} // namespace

class TestValueLimits : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theNearestIsTaken_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("error");
        const auto row = [](const char *text, const char *error) {
            QTest::newRow(text) << QString(text) << QString(error);
        };
        row("0", "0 is below min, which is 0.05; the nearest is 0.1");
        row("0.05", "0.05 cannot be had exactly; the nearest is 0.1");
        row("0.06", "0.06 cannot be had exactly; the nearest is 0.1");
        row("10.1", "10.1 is above max, which is 10.07; the nearest is 10.0");
        row("10.07", "10.07 cannot be had exactly; the nearest is 10.0");
        row("1e30", "1e30 is above max, which is 10.07; the nearest is 10.0");
        row("5.55", "5.55 cannot be had exactly; the nearest is 5.5");
    }

    void theNearestIsTaken()
    {
        QFETCH(QString, text);
        QString problems;
        const auto converter = converterOf({"u16", "0.1", "", "", "0.05", "10.07"}, &problems);
        QVERIFY(converter);
        QCOMPARE(problems,
                 QString("min: 0.05 is no value; the lowest that can be entered is 0.1\n"
                         "max: 10.07 is no value; the highest that can be entered is 10.0\n"));
        QTEST(converter->enter(text).error, "error");
    }

    void limitsBetweenWholeNumbersHoldToo()
    {
        QString problems;
        const auto converter = converterOf({"u16", "", "", "", "0.5", "9.5"}, &problems);
        QVERIFY(converter);
        QCOMPARE(problems, QString("min: 0.5 is no value; the lowest that can be entered is 1\n"
                                   "max: 9.5 is no value; the highest that can be entered is 9\n"));
        QCOMPARE(converter->enter(QStringLiteral("0")).error,
                 QString("0 is below min, which is 0.5; the nearest is 1"));
        QCOMPARE(converter->enter(QStringLiteral("100000")).error,
                 QString("100000 is above max, which is 9.5; the nearest is 9"));
    }

    void limitsWithoutAnyValueAreWarnedOf()
    {
        QString problems;
        const auto converter = converterOf({"u16", "0.1", "", "", "0.01", "0.09"}, &problems);
        QVERIFY(converter);
        QCOMPARE(problems, QString("min: no value lies within min and max\n"
                                   "max: no value lies within min and max\n"));
        QCOMPARE(converter->enter(QStringLiteral("0")).error,
                 QString("0 is below min, which is 0.01; no value lies within min and max"));
        QCOMPARE(converter->enter(QStringLiteral("0.05")).error,
                 QString("0.05 cannot be had exactly; no value lies within min and max"));
    }

    void limitsOfFloatsAreTaken()
    {
        QString problems;
        const auto limited = converterOf({"f32", "", "", "", "0.05", "1e30"}, &problems);
        QVERIFY(limited);
        QCOMPARE(problems, QString());
        QCOMPARE(limited->enter(QStringLiteral("1e40")).error,
                 QString("1e40 is above max, which is 1000000000000000000000000000000; the nearest "
                         "is 1000000000000000000000000000000"));
        QCOMPARE(limited->enter(QStringLiteral("0.05")).error, QString());
    }

    void whatIsOfferedIsTheNearestThatIsTaken()
    {
        const char *const numbers[] = {"0.1", "0.3",  "-0.7", "2",    "0.004", "-0.05",
                                       "",    "12.5", "0.03", "1.75", "-3",    "0.01"};
        const char *const decimals[] = {"", "", "0", "1", "2"};
        std::mt19937 random(1);
        const auto one = [&](const auto &of) { return of[random() % std::size(of)]; };
        const char *const types[] = {"u8", "s8"};
        const auto drawn = [&] {
            return QByteArray::number((static_cast<int>(random() % 20000) - 5000) /
                                          (random() % 2 == 0 ? 100.0 : 1000.0),
                                      'f', 3);
        };
        for (int i = 0; i < 1000; ++i) {
            const QByteArray min = drawn();
            const QByteArray max = drawn();
            const char *const places = one(decimals);
            const bool isWhole = *places == '\0';
            QString problems;
            const auto converter = converterOf(
                {one(types), one(numbers), one(numbers), places,
                 min.toDouble() < max.toDouble() ? min.constData() : "", max.constData()},
                &problems);
            QVERIFY2(converter, qPrintable(problems));
            for (int j = 0; j < 3; ++j) {
                const QString fault = faultOf(*converter, isWhole, QString::fromLatin1(drawn()));
                if (!fault.isEmpty())
                    QFAIL(qPrintable(fault + QLatin1Char('\n') + problems));
            }
        }
    }
};

QTEST_APPLESS_MAIN(TestValueLimits)
#include "tst_value_limits.moc"
