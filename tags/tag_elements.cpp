#include "tags/tag_elements.h"

#include "tags/tag_span.h"

namespace kvt
{

namespace
{

QString readEither(const QString &text, const QString &no, const QString &yes, bool *isYes)
{
    const bool isNo = text.isEmpty() || text.compare(no, Qt::CaseInsensitive) == 0;
    *isYes = !isNo && text.compare(yes, Qt::CaseInsensitive) == 0;
    return isNo || *isYes ? QString()
                          : QStringLiteral("\"%1\" is neither %2 nor %3").arg(text, no, yes);
}

} // namespace

QStringList elementTexts(const Tag &tag)
{
    TagSpan span;
    const QString fault = parseTagSpan(tag.area, tag.address, tag.form, &span);
    return fault.isEmpty() ? span.texts : QStringList(tag.address);
}

QString writeFault(const Tag &tag)
{
    TagSpan span;
    const QString fault = parseTagSpan(tag.area, tag.address, tag.form, &span);
    return fault.isEmpty() ? span.writeFault : fault;
}

bool isOneElement(const ValueForm &form, Area area)
{
    switch (form.type) {
    case ValueType::Bool:
    case ValueType::Bit:
    case ValueType::String:
        return false;
    default:
        return elementCount(form, area) == 1 && !(area == Area::D && swapsBytes(form.order));
    }
}

QString readTorn(const QString &text, bool *accepts)
{
    return readEither(text, QStringLiteral("refuse"), QStringLiteral("accept"), accepts);
}

QString readWriteOrder(const QString &text, bool *isDown)
{
    return readEither(text, QStringLiteral("up"), QStringLiteral("down"), isDown);
}

} // namespace kvt
