#include "tags/word_order.h"

namespace kvt
{

QString wordOrderName(WordOrder order)
{
    switch (order) {
    case WordOrder::Abcd:
        return QStringLiteral("abcd");
    case WordOrder::Badc:
        return QStringLiteral("badc");
    case WordOrder::Cdab:
        return QStringLiteral("cdab");
    case WordOrder::Dcba:
        return QStringLiteral("dcba");
    }
    return QString();
}

std::optional<WordOrder> parseWordOrder(const QString &text)
{
    for (const WordOrder order :
         {WordOrder::Abcd, WordOrder::Badc, WordOrder::Cdab, WordOrder::Dcba})
        if (text.compare(wordOrderName(order), Qt::CaseInsensitive) == 0)
            return order;
    return std::nullopt;
}

QString wordOrderFault(const QString &text)
{
    return QStringLiteral("\"%1\" is no order (abcd, badc, cdab or dcba)").arg(text);
}

} // namespace kvt
