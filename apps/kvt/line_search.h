// Speeds and formats to try on a line of which neither is known.
#ifndef KVT_APPS_KVT_LINE_SEARCH_H
#define KVT_APPS_KVT_LINE_SEARCH_H

#include "apps/kvt/line_options.h"

#include <QVector>

namespace kvt
{

/// How a search for speed and format has ended.
enum class SearchEnd { Found, NothingAnswers, Stopped };

/// Returns `known` with every usual speed and format, the most likely first. A speed or format that
/// is fixed stays as it is.
QVector<SerialSettings> settingsToTry(const SerialSettings &known, bool speedIsFixed,
                                      bool formatIsFixed);

/// Asks for each of `probes` with one setting after the other until a reply looks like the
/// station's own, or a refusal; `line->serial` then has the setting. `*tried` counts those that the
/// port takes. With Stopped, `*exitCode` says why, after a message.
SearchEnd searchLine(const QVector<SerialSettings> &settings, const QVector<Tag> &probes,
                     LineOptions *line, int *tried, int *exitCode);

} // namespace kvt

#endif
