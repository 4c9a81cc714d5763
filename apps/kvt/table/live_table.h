// The live table without its terminal: what each line shows, and what keys do.
#ifndef KVT_APPS_KVT_TABLE_LIVE_TABLE_H
#define KVT_APPS_KVT_TABLE_LIVE_TABLE_H

#include "apps/kvt/table/table_layout.h"

#include <QStringList>

namespace kvt
{

/// Text in one colour.
struct TableSpan {
    QString text;
    Concern concern = Concern::None;
    bool isPlain = true; ///< no colour, whatever the concern
};

/// One line, no wider than the terminal.
using TableLine = QVector<TableSpan>;

/// A key that was pressed.
enum class Key { Up, Down, PageUp, PageDown, Home, End, Backspace, Enter, Escape, Character };

/// What a key asks for beyond the table.
enum class TableWish { Nothing, Acknowledge, End };

/// Rows under a header, of which a window is shown. Bad rows come first until the order of the
/// list is asked for. No thread, no terminal.
class LiveTable
{
public:
    /// The terminal has this size, above 0.
    void resize(int columns, int lines);

    /// The lines above the table; anything unprintable in them is made printable.
    void setHeader(const QStringList &lines) { header_ = lines; }

    /// All rows, in the order of the list.
    void setRows(const QVector<TableRow> &rows);

    /// A key was pressed; `character` is that of Key::Character. Arrows and pages scroll, "/"
    /// begins a filter, which Enter ends and Escape takes away, "s" changes the order. "a"
    /// acknowledges alarms, "q" ends the program.
    TableWish press(Key key, QChar character = QChar());

    /// The rows whose alarm nobody has seen to and which the filter leaves, by their place in the
    /// list: those that "a" is about.
    QVector<int> unacknowledged() const;

    /// Every line of the terminal, from the top.
    QVector<TableLine> lines() const;

    /// The same without the line about keys, for a terminal that is given back.
    QVector<TableLine> finalLines() const;

private:
    void typeFilter(Key key, QChar character);
    TableWish type(QChar character);
    void arrange();
    bool matches(const TableRow &row) const;
    void scrollTo(int top);
    int windowHeight() const;
    TableLine headerLine(const QString &text) const;
    TableLine rowLine(const TableRow &row, const QVector<PlacedColumn> &columns,
                      bool coloured) const;
    QString positionText() const;
    QString footer() const;

    int columns_ = 80;
    int lines_ = 24;
    QStringList header_;
    QVector<TableRow> rows_;
    int widestValue_ = 0; // so far: columns move once at most
    QVector<int> order_;  // indices of the rows that are shown, in the order in which they are
    int top_ = 0;         // index in order_ of the first row in the window
    QString filter_;
    bool isTyping_ = false; // the filter
    bool badFirst_ = true;
};

} // namespace kvt

#endif
