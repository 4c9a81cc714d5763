// What kvt plan prints.
#ifndef KVT_APPS_KVT_PLAN_REPORT_H
#define KVT_APPS_KVT_PLAN_REPORT_H

#include "host/scan_plan.h"
#include "host/serial_line.h"

#include <QJsonArray>
#include <QJsonObject>

namespace kvt
{

/// A plan with what it was made from.
struct PlanReport {
    SerialSettings serial; ///< speed and format
    PlanSettings settings;
    ScanPlan plan;
    int asked_ms = 0;            ///< scan time asked for; 0: none
    QMap<int, qint64> scanAt_ns; ///< the scan at other speeds, by baud
};

/// True when the scan is as fast as asked.
bool isAchievable(const PlanReport &report);

/// Returns how often the classes of a list are read and what they take of the line; empty when
/// there are none.
QString classesText(const LineForecast &forecast);

/// The same as JSON, an object for each class.
QJsonArray classesToJson(const LineForecast &forecast);

/// Adds to a summary what keeping all intervals takes of the line; nothing when there are none.
void addClassLoad(const LineForecast &forecast, QJsonObject *summary);

QString planText(const PlanReport &report);

QJsonObject planToJson(const PlanReport &report);

} // namespace kvt

#endif
