// Random values of the wide types as they lie in the PLC, in each word order, shown and entered
// again. KVT_DRAWS sets how many of each row; a release is tried with 10,000,000, and
// QTEST_FUNCTION_TIMEOUT=3600000 since that takes minutes.
#include "tags/value_converter.h"

#include "tags/number_text.h"
#include "tags/value_elements.h"

#include <QtTest>

#include <array>
#include <random>

using namespace kvt;

namespace
{

constexpr WordOrder ORDERS[] = {WordOrder::Abcd, WordOrder::Badc, WordOrder::Cdab, WordOrder::Dcba};
constexpr int DEFAULT_DRAWS = 100000;

int draws()
{
    bool good = false;
    const int asked = qEnvironmentVariableIntValue("KVT_DRAWS", &good);
    return good ? asked : DEFAULT_DRAWS;
}

MeaningTexts scaledBy(const QString &scale, const QString &offset, const QString &decimals)
{
    MeaningTexts texts;
    texts[MeaningColumn::Scale] = scale;
    texts[MeaningColumn::Offset] = offset;
    texts[MeaningColumn::Decimals] = decimals;
    return texts;
}

/// Bits of a type, every length of number as likely as any other.
quint64 drawnBits(ValueType type, std::mt19937_64 *random)
{
    const int size = 8 * byteCount({type}, Area::D);
    quint64 bits = (*random)() >> (64 - size);
    if (isFloat(type))
        return bits;
    if (type == ValueType::Bcd32)
        return rawBits(type, static_cast<qint64>(bits % 100000000));
    bits >>= (*random)() % static_cast<quint64>(size);
    const bool negative = ((*random)() & 1) != 0;
    return (negative ? quint64(0) - bits : bits) & ~quint64(0) >> (64 - size);
}

using Elements = std::array<quint16, 8>;

struct Place {
    Area area;
    ValueConverter converter;
};

/// Shows what the PLC holds and enters it. Says what is then another in the PLC.
QString faultOf(const Place &place, quint64 bits)
{
    const ValueForm &form = place.converter.form();
    Elements held = {};
    splitElements(form, place.area, bits, held.data());
    NumberText text;
    place.converter.appendNumber(joinElements(form, place.area, held.data()), &text);
    Elements written = {};
    const QString error = place.converter.enterInto(text.toString(), written.data());
    return error.isEmpty() && written == held
               ? QString()
               : QStringLiteral("%1 as %2 is shown as %3 and comes back as another %4")
                     .arg(QString::number(bits, 16), wordOrderName(form.order), text.toString(),
                          error);
}

/// Takes a double away from those that lose digits when they grow smaller, below 1e-307.
constexpr quint64 NOT_TINY = quint64(1) << 60;

} // namespace

class TestValueRoundTrips : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void drawnValuesComeBack_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("scale");
        QTest::addColumn<QString>("offset");
        QTest::addColumn<QString>("decimals");
        const auto row = [](ValueType type, const char *scale, const char *offset,
                            const char *decimals) {
            QTest::addRow("%s scale '%s' offset '%s' decimals '%s'", qPrintable(typeName(type)),
                          scale, offset, decimals)
                << int(type) << QString(scale) << QString(offset) << QString(decimals);
        };
        for (const ValueType type :
             {ValueType::U32, ValueType::S32, ValueType::Bcd32, ValueType::U64, ValueType::S64}) {
            row(type, "", "", "");
            row(type, "0.1", "", "");
            row(type, "-0.003", "17.25", "");
            row(type, "0.1", "0.05", "1");
            row(type, "1234.5", "-1e6", "0");
        }
        row(ValueType::F32, "", "", "");
        row(ValueType::F32, "0.1", "", "");
        row(ValueType::F32, "-3600", "", "");
        row(ValueType::F64, "", "", "");
        row(ValueType::F64, "0.25", "", "");
    }

    void drawnValuesComeBack()
    {
        QFETCH(int, type);
        QFETCH(QString, scale);
        QFETCH(QString, offset);
        QFETCH(QString, decimals);
        QVector<MeaningProblem> problems;
        std::vector<Place> places;
        for (const Area area : {Area::D, Area::C})
            for (const WordOrder order : ORDERS) {
                ValueForm form{ValueType(type)};
                form.order = order;
                places.push_back(
                    {area, *ValueConverter::make(form, area, scaledBy(scale, offset, decimals),
                                                 &problems)});
            }
        QVERIFY(problems.isEmpty());
        const bool mayVanish = ValueType(type) == ValueType::F64 && !scale.isEmpty();
        std::mt19937_64 random(1);
        for (int i = draws(); i > 0; --i) {
            const quint64 bits = drawnBits(ValueType(type), &random) | (mayVanish ? NOT_TINY : 0);
            const QString fault = faultOf(places[static_cast<size_t>(i) % places.size()], bits);
            if (!fault.isEmpty())
                QFAIL(qPrintable(fault));
        }
    }

    // A double has no digits to spare for a scale: what is shown may stand for a neighbour, which
    // is then shown the same.
    void doublesWithAScaleSettle()
    {
        QVector<MeaningProblem> problems;
        const std::optional<ValueConverter> converter =
            ValueConverter::make({ValueType::F64}, Area::D, scaledBy("0.1", "", ""), &problems);
        QVERIFY(converter);
        std::mt19937_64 random(1);
        for (int i = draws(); i > 0; --i) {
            const quint64 bits = (random() & 0xBFFFFFFFFFFFFFFF) | NOT_TINY; // no infinities
            NumberText text;
            converter->appendNumber(bits, &text);
            const quint64 back = converter->enter(text.toString()).bits;
            NumberText again;
            converter->appendNumber(back, &again);
            const bool near = back - bits + 1 <= 2;
            if (!near || text.view() != again.view())
                QFAIL(qPrintable(text.toString() + QLatin1Char(' ') + again.toString()));
        }
    }
};

QTEST_GUILESS_MAIN(TestValueRoundTrips)
#include "tst_value_round_trips.moc"
