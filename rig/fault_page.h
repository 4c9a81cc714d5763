// The fault matrix for people: a row for each fault.
#ifndef KVT_RIG_FAULT_PAGE_H
#define KVT_RIG_FAULT_PAGE_H

#include "rig/fault_cell.h"

namespace kvt
{

/// Returns the tables of the page in Markdown: what is told, the figures with the default settings
/// and those with others. Each figure is the worst of all kinds of requests.
QString faultPage(const QVector<CellResult> &results);

} // namespace kvt

#endif
