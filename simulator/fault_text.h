// Fault rules as text, for a command line.
//
//   rules     rule,rule,...
//   rule      name=when[:duration[~jitter]][@station]
//   name      noreply refuse truncate extra badend flip foreign duplicate echo delay late silence
//             break
//   when      0.5%      with that probability at each exchange, at most seven decimals
//             every100  at every hundredth exchange
//             5-20      at the exchanges with these numbers, counted from 1
//             7         at that one alone
//   duration  80ms, 2s, 300us; delay and late must have one, and may have a jitter; silence and
//             break may have one (one second without); the other faults have none
//
// For example "late=1%:80ms,noreply=0.5%@3".
#ifndef KVT_SIMULATOR_FAULT_TEXT_H
#define KVT_SIMULATOR_FAULT_TEXT_H

#include "simulator/fault_plan.h"

#include <QString>

namespace kvt
{

/// The rules of a text, or what is wrong with it.
struct FaultTextResult {
    QVector<FaultRule> rules;
    QString error; ///< empty when all is well; else it quotes the rule that is wrong
};

/// Reads fault rules; an empty text has none.
FaultTextResult parseFaults(const QString &text);

} // namespace kvt

#endif
