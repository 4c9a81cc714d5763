// What it costs to show a value and to read one that was entered.
#include "tags/number_text.h"
#include "tags/value_converter.h"
#include "tags/value_elements.h"

#include <benchmark/benchmark.h>

#include <array>
#include <random>

using namespace kvt;

namespace
{

constexpr size_t DRAWS = 1024; // values in turn, so that no branch is learned by heart

struct Case {
    const char *name;
    ValueType type;
    const char *scale;
    const char *offset;
    const char *decimals;
};

constexpr Case CASES[] = {
    {"u16", ValueType::U16, "", "", ""},
    {"s16*0.1", ValueType::S16, "0.1", "", ""},
    {"s16*0.01-40,1", ValueType::S16, "0.01", "-40", "1"},
    {"u32*0.001", ValueType::U32, "0.001", "", ""},
    {"u64*0.001", ValueType::U64, "0.001", "", ""},
    {"bcd32", ValueType::Bcd32, "", "", ""},
    {"f32", ValueType::F32, "", "", ""},
    {"f32,2", ValueType::F32, "", "", "2"},
    {"f32*0.1", ValueType::F32, "0.1", "", ""},
    {"f64", ValueType::F64, "", "", ""},
};

ValueConverter converterOf(const Case &one)
{
    MeaningTexts texts;
    texts[MeaningColumn::Scale] = QLatin1String(one.scale);
    texts[MeaningColumn::Offset] = QLatin1String(one.offset);
    texts[MeaningColumn::Decimals] = QLatin1String(one.decimals);
    QVector<MeaningProblem> problems;
    ValueForm form(one.type);
    form.order = WordOrder::Cdab;
    return *ValueConverter::make(form, Area::D, texts, &problems);
}

using Elements = std::array<quint16, 4>;

std::vector<Elements> drawnElements(const ValueForm &form)
{
    std::mt19937_64 random(1);
    std::uniform_real_distribution<double> number(-10000, 10000);
    std::vector<Elements> drawn(DRAWS);
    for (Elements &elements : drawn) {
        const int size = 8 * byteCount(form, Area::D);
        quint64 bits = random() >> (64 - size);
        if (form.type == ValueType::Bcd32)
            bits = rawBits(form.type, static_cast<qint64>(bits % 100000000));
        else if (isFloat(form.type))
            bits = floatBits(form.type, number(random));
        splitElements(form, Area::D, bits, elements.data());
    }
    return drawn;
}

void show(benchmark::State &state, const Case &one)
{
    const ValueConverter converter = converterOf(one);
    const std::vector<Elements> drawn = drawnElements(converter.form());
    size_t next = 0;
    for (auto _ : state) {
        NumberText text;
        converter.appendNumber(
            joinElements(converter.form(), Area::D, drawn[next++ % DRAWS].data()), &text);
        benchmark::DoNotOptimize(text);
    }
}

void toNumber(benchmark::State &state, const Case &one)
{
    const ValueConverter converter = converterOf(one);
    const std::vector<Elements> drawn = drawnElements(converter.form());
    size_t next = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(converter.number(
            joinElements(converter.form(), Area::D, drawn[next++ % DRAWS].data())));
}

void enter(benchmark::State &state, const Case &one)
{
    const ValueConverter converter = converterOf(one);
    QVector<QString> texts;
    for (const Elements &elements : drawnElements(converter.form())) {
        NumberText text;
        converter.appendNumber(joinElements(converter.form(), Area::D, elements.data()), &text);
        texts.append(text.toString());
    }
    size_t next = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(converter.enter(texts.at(static_cast<int>(next++ % DRAWS))).bits);
}

} // namespace

int main(int argc, char **argv)
{
    for (const Case &one : CASES) {
        const std::string name = one.name;
        benchmark::RegisterBenchmark(("number/" + name).c_str(), toNumber, one);
        benchmark::RegisterBenchmark(("show/" + name).c_str(), show, one);
        benchmark::RegisterBenchmark(("enter/" + name).c_str(), enter, one);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
