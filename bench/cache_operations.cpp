#include "bench/driver_rig.h"
#include "bench/operations.h"
#include "cache/host_data.h"
#include "varlist/address_text.h"

#include <QStringList>

namespace
{

constexpr int REPEATS = 1000;

QStringList textsOf(const QList<HOST_VAR> &vars)
{
    QStringList texts;
    for (const HOST_VAR &var : vars)
        texts.append(var.addressText);
    return texts;
}

// Reads the values that `texts` name in turn, from the first again after the last. Begins in the
// middle, where a read costs what it does on average.
Operation readsInTurn(const QStringList &texts)
{
    resetDriver();
    fillCache(AREA_D, texts.size());
    return [texts, next = texts.size() / 2, out = QByteArray()]() mutable {
        GetRegisterData(QString(), AREA_D, texts.at(next), 1, out, 1);
        next = next + 1 < texts.size() ? next + 1 : 0;
    };
}

Operation prepareInOrder(int n)
{
    return readsInTurn(textsOf(variables(AREA_D, n)));
}

Operation prepareAtRandom(int n)
{
    QList<HOST_VAR> vars = variables(AREA_D, n);
    shuffle(vars);
    return readsInTurn(textsOf(vars));
}

Operation prepareWrite(int n)
{
    resetDriver();
    fillCache(AREA_D, n);
    RW_VAR var;
    var.areaType = AREA_D;
    var.station = 1;
    var.address = n / 2;
    var.count = 1;
    var.data = QByteArray(2, '\x02');
    return [var, n]() mutable {
        WriteDataToLocal(&var);
        var.address = var.address + 1 < n ? var.address + 1 : 0;
    };
}

Operation prepareAddress(int)
{
    const QString text = QStringLiteral("312.15.1");
    return [text] { StringAddressToInt(AREA_D, text); };
}

} // namespace

std::vector<OperationKind> cacheOperations()
{
    return {{"getInOrder", SIZES, REPEATS, prepareInOrder},
            {"getAtRandom", SIZES, REPEATS, prepareAtRandom},
            {"writeToLocal", SIZES, REPEATS, prepareWrite},
            {"addressOfText", {1}, REPEATS, prepareAddress}};
}
