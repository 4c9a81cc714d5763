// Texts that came from elsewhere, made fit for a terminal.
#ifndef KVT_APPS_KVT_TABLE_PRINTABLE_H
#define KVT_APPS_KVT_TABLE_PRINTABLE_H

#include <QString>

namespace kvt
{

/// Returns the text with every character that could steer a terminal replaced by its code, "\x1b"
/// or "\u202e": controls with line ends and tabs, line and paragraph separators, and marks that
/// turn the direction of writing. Characters in `kept` stay as they are.
QString printable(const QString &text, const QString &kept = QString());

/// The same for JSON, where a code reads "\u001b" and stands for the character itself.
QString printableJson(const QString &json);

/// Columns of a terminal that a printable text takes; East Asian characters take two.
int displayWidth(const QString &text);

/// Returns a printable text cut or filled up to `width` columns, not negative. A text that was cut
/// ends in "~".
QString fitted(const QString &text, int width, Qt::Alignment alignment = Qt::AlignLeft);

} // namespace kvt

#endif
