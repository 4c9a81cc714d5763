#include "bench/driver_rig.h"

#include "cache/host_data.h"
#include "driver/entry_points.h"

#include <QtGlobal>

#include <random>

namespace
{

int ignoreOnceRead(int, int, int, int)
{
    return 0;
}

void ignoreOwner(QList<RW_VAR> *, int, int) {}

QByteArray replyTo(const Protocol &request)
{
    QByteArray reply("\x06"
                     "01");
    reply += QByteArray(request.builderParam2, '7');
    reply += '\r';
    return reply;
}

} // namespace

QString addressText(int area, int index)
{
    if (area == AREA_C)
        return QStringLiteral("0.%1.%2.0").arg(index / 2).arg(index % 2);
    return QStringLiteral("%1.%2.%3").arg(index / 32).arg(index / 2 % 16).arg(index % 2);
}

QList<HOST_VAR> variables(int area, int count)
{
    QList<HOST_VAR> list;
    for (int i = 0; i < count; ++i) {
        HOST_VAR var;
        var.areaType = static_cast<quint8>(area);
        var.station = 1;
        var.addressText = addressText(area, i);
        list.append(var);
    }
    return list;
}

void shuffle(QList<HOST_VAR> &list)
{
    std::mt19937 random(1);
    for (int i = list.size() - 1; i > 0; --i)
        list.swapItemsAt(i, static_cast<int>(random() % static_cast<unsigned>(i + 1)));
}

void resetDriver()
{
    static ComInfo info;
    info = ComInfo();
    SetComInfo(&info);
    RegistCallBackFuncIntf(ignoreOnceRead, ignoreOwner);
    PLC_driver.readList.clear();
    PLC_driver.writeList.clear();
    PLC_driver.onceReadList.clear();
    PLC_driver.pendingFrames.clear();
    PLC_driver.extendVars.clear();
}

void fillCache(int area, int count)
{
    RW_VAR var;
    var.areaType = area;
    var.station = 1;
    var.count = count;
    var.data = QByteArray(2 * count, '\x01');
    WriteDataToLocal(&var);
}

void exchange()
{
    static QByteArray reply;
    const Protocol *request = ComCommunication();
    if (reply.size() != request->expectedReplyLength)
        reply = replyTo(*request);
    if (DataCom(&reply, reply.size())->result != 1)
        qFatal("an exchange failed");
}
