#include "apps/kvt/table/live_table.h"

#include "apps/kvt/table/printable.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace kvt
{

namespace
{

constexpr int LINES_AROUND_ROWS = 2; // heading and footer

// Values and ages change too often to look for.
constexpr Column FILTERED[] = {Column::Tag,     Column::Area,  Column::Address,
                               Column::Quality, Column::Alarm, Column::Result};

Concern worst(const TableRow &row)
{
    return std::min(row.concern, row.alarmConcern);
}

// A raw value that is cut looks like another one: it goes as a whole where there is no room for it.
QString withoutRaw(const QString &value, int width)
{
    const int raw = value.lastIndexOf(QLatin1String(" ("));
    if (displayWidth(value) <= width || raw < 0 || !value.endsWith(QLatin1Char(')')))
        return value;
    return value.left(raw) + QLatin1Char('~');
}

} // namespace

void LiveTable::resize(int columns, int lines)
{
    columns_ = columns;
    lines_ = lines;
    scrollTo(top_);
}

void LiveTable::setRows(const QVector<TableRow> &rows)
{
    rows_ = rows;
    widestValue_ = std::max(widestValue_, widestValueOf(rows));
    arrange();
}

TableWish LiveTable::press(Key key, QChar character)
{
    if (isTyping_) {
        typeFilter(key, character);
        return TableWish::Nothing;
    }
    const int page = std::max(windowHeight() - 1, 1);
    switch (key) {
    case Key::Up:
        scrollTo(top_ - 1);
        break;
    case Key::Down:
        scrollTo(top_ + 1);
        break;
    case Key::PageUp:
        scrollTo(top_ - page);
        break;
    case Key::PageDown:
        scrollTo(top_ + page);
        break;
    case Key::Home:
        scrollTo(0);
        break;
    case Key::End:
        scrollTo(order_.size());
        break;
    case Key::Escape:
        filter_.clear();
        arrange();
        break;
    case Key::Character:
        return type(character);
    case Key::Backspace:
    case Key::Enter:
        break;
    }
    return TableWish::Nothing;
}

TableWish LiveTable::type(QChar character)
{
    isTyping_ = character == QLatin1Char('/');
    if (character == QLatin1Char('s')) {
        badFirst_ = !badFirst_;
        arrange();
    }
    if (character == QLatin1Char('a'))
        return TableWish::Acknowledge;
    return character == QLatin1Char('q') ? TableWish::End : TableWish::Nothing;
}

QVector<int> LiveTable::unacknowledged() const
{
    QVector<int> rows;
    std::copy_if(order_.begin(), order_.end(), std::back_inserter(rows),
                 [this](int row) { return rows_.at(row).isUnacknowledged; });
    return rows;
}

void LiveTable::typeFilter(Key key, QChar character)
{
    if (key == Key::Character)
        filter_ += character;
    else if (key == Key::Backspace)
        filter_.chop(1);
    else if (key == Key::Escape)
        filter_.clear();
    isTyping_ = key == Key::Character || key == Key::Backspace;
    top_ = 0;
    arrange();
}

void LiveTable::arrange()
{
    order_.clear();
    for (int i = 0; i < rows_.size(); ++i)
        if (matches(rows_.at(i)))
            order_.append(i);
    if (badFirst_)
        std::stable_sort(order_.begin(), order_.end(), [this](int one, int other) {
            return worst(rows_.at(one)) < worst(rows_.at(other));
        });
    scrollTo(top_);
}

bool LiveTable::matches(const TableRow &row) const
{
    return std::any_of(std::begin(FILTERED), std::end(FILTERED), [&](Column column) {
        return row.cell(column).contains(filter_, Qt::CaseInsensitive);
    });
}

void LiveTable::scrollTo(int top)
{
    top_ = std::max(std::min(top, order_.size() - windowHeight()), 0);
}

int LiveTable::windowHeight() const
{
    return std::max(lines_ - header_.size() - LINES_AROUND_ROWS, 1);
}

QVector<TableLine> LiveTable::lines() const
{
    QVector<TableLine> lines = finalLines();
    while (lines.size() < lines_ - 1)
        lines.append(TableLine());
    lines.append(headerLine(footer()));
    return lines.mid(0, lines_);
}

QVector<TableLine> LiveTable::finalLines() const
{
    const QVector<PlacedColumn> columns = layOut(rows_, columns_, widestValue_);
    QVector<TableLine> lines;
    for (const QString &text : header_)
        lines.append(headerLine(text));
    lines.append(rowLine(headingRow(), columns, false));
    for (const int row : order_.mid(top_, windowHeight()))
        lines.append(rowLine(rows_.at(row), columns, true));
    return lines;
}

TableLine LiveTable::headerLine(const QString &text) const
{
    return {{fitted(printable(text), columns_), Concern::None, true}};
}

TableLine LiveTable::rowLine(const TableRow &row, const QVector<PlacedColumn> &columns,
                             bool coloured) const
{
    TableLine line;
    int left = columns_;
    for (const PlacedColumn &placed : columns) {
        if (!line.isEmpty())
            line.append({QString(COLUMN_GAP, QLatin1Char(' ')), Concern::None, true});
        const int width = std::min(placed.width, left);
        const bool isAlarm = placed.column == Column::Alarm;
        const QString &cell = row.cell(placed.column);
        const QString text = placed.column == Column::Value ? withoutRaw(cell, width) : cell;
        line.append({fitted(text, width, alignmentOf(placed.column)),
                     isAlarm ? row.alarmConcern : row.concern,
                     !coloured || !(isAlarm || placed.column == Column::Quality)});
        left -= width + COLUMN_GAP;
    }
    return line;
}

QString LiveTable::positionText() const
{
    const int last = std::min(top_ + windowHeight(), order_.size());
    const QString range =
        order_.isEmpty() ? QStringLiteral("none of %1").arg(rows_.size())
                         : QStringLiteral("%1-%2 of %3").arg(top_ + 1).arg(last).arg(order_.size());
    const auto bad = std::count_if(rows_.begin(), rows_.end(), [](const TableRow &row) {
        return row.concern != Concern::None;
    });
    const auto unacknowledged = std::count_if(
        rows_.begin(), rows_.end(), [](const TableRow &row) { return row.isUnacknowledged; });
    QString text = range;
    if (bad > 0)
        text += QStringLiteral(", %1 not good").arg(bad);
    if (unacknowledged > 0)
        text += QStringLiteral(", %1 unacknowledged").arg(unacknowledged);
    return text;
}

QString LiveTable::footer() const
{
    if (isTyping_)
        return QStringLiteral("/%1_  (Enter keeps, Esc ends the filter)").arg(filter_);
    QString text = positionText();
    if (!filter_.isEmpty())
        text += QStringLiteral(", filter \"%1\"").arg(filter_);
    QString separator = QStringLiteral("  ");
    QStringList hints = {QStringLiteral("q end"), QStringLiteral("/ filter"),
                         badFirst_ ? QStringLiteral("s list order") : QStringLiteral("s bad first"),
                         QStringLiteral("arrows scroll")};
    if (!unacknowledged().isEmpty())
        hints.insert(1, QStringLiteral("a acknowledge"));
    for (const QString &hint : std::as_const(hints)) {
        if (displayWidth(text + separator + hint) > columns_)
            break;
        text += separator + hint;
        separator = QStringLiteral(", ");
    }
    return text;
}

} // namespace kvt
