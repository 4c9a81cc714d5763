#include "apps/kvt/common/counted.h"

namespace kvt
{

QString counted(qint64 number, const char *one, const char *several)
{
    return QStringLiteral("%1 %2").arg(number).arg(QLatin1String(number == 1 ? one : several));
}

} // namespace kvt
