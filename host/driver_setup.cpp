#include "host/driver_setup.h"

#include "tags/block_digit.h"
#include "tags/tag_elements.h"
#include "tags/tag_watch.h"

namespace kvt
{

namespace
{

int ignoreOnceReadDone(int, int, int, int)
{
    return 0;
}

void ignoreOwnerNotify(QList<RW_VAR> *, int, int) {}

HOST_VAR hostVariable(const Tag &tag, const QString &addressText)
{
    HOST_VAR variable;
    variable.areaType = static_cast<quint8>(tag.area);
    variable.station = static_cast<quint8>(tag.station);
    variable.addressText = addressText;
    return variable;
}

} // namespace

void ignoreCallbacks(const DriverApi &api)
{
    api.RegistCallBackFuncIntf(ignoreOnceReadDone, ignoreOwnerNotify);
}

DriverSetup::DriverSetup(const DriverApi &api, const QVector<Tag> &tags, int retryLimit,
                         bool remoteMode)
    : api_(api), localWords_(BLOCK_SELECT_WORD + 1)
{
    comInfo_.retryLimit = retryLimit;
    // A failing station must not cost the others their queued requests.
    comInfo_.purgeByStation = 1;
    comInfo_.remoteMode = remoteMode ? 1 : 0;
    comInfo_.hostWriteMode = HOST_WRITE_TO_PLC;
    QList<HOST_VAR> variables;
    for (const Tag &tag : tags) {
        // Those that have an interval are read by the host's own requests.
        const QStringList texts = intervalOf_ns(tag) == 0 ? elementTexts(tag) : QStringList();
        for (const QString &text : texts)
            variables.append(hostVariable(tag, text));
        if (const std::optional<int> digit = blockDigit(tag))
            localWords_[BLOCK_SELECT_WORD] = static_cast<quint16>(*digit);
    }
    api_.SetComInfo(&comInfo_);
    api_.FlashLocalRegister(nullptr, localWords_.data(), nullptr);
    ignoreCallbacks(api_);
    readListLength_ = api_.ReCreatReadVarList(&variables);
}

void DriverSetup::stopCyclicReads()
{
    QList<HOST_VAR> none;
    readListLength_ = api_.ReCreatReadVarList(&none);
}

DriverSetup::~DriverSetup()
{
    api_.FlashLocalRegister(nullptr, nullptr, nullptr);
}

QStringList DriverSetup::obstacles(const QVector<Tag> &tags)
{
    QStringList found;
    for (const BlockDigitClash &clash : blockDigitClashes(tags))
        found.append(QStringLiteral("%1: %2").arg(tags.at(clash.index).name, clash.text));
    return found;
}

} // namespace kvt
