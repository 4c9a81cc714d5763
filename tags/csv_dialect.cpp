#include "tags/csv_dialect.h"

#include <QByteArrayList>

#include <algorithm>

namespace kvt
{

namespace
{

constexpr char SEPARATORS[] = {',', ';', '\t'};

struct Line {
    int from = 0;
    int to = 0; // its end is not in it
};

bool isSeparator(char character)
{
    return std::count(std::begin(SEPARATORS), std::end(SEPARATORS), character) > 0;
}

/// True when there is nothing but separators and blanks: cells of a spreadsheet without text.
bool holdsNothing(const QByteArray &text)
{
    return std::all_of(text.cbegin(), text.cend(),
                       [](char character) { return character == ' ' || isSeparator(character); });
}

/// Comments may be quoted: a spreadsheet does so where a separator or a quote is in them.
bool isComment(const QByteArray &line)
{
    if (line.startsWith('#'))
        return true;
    return line.startsWith('"') && line.mid(1).trimmed().startsWith('#') &&
           holdsNothing(line.mid(line.lastIndexOf('"') + 1));
}

/// Returns the first line that is neither without text nor a comment.
Line firstLine(const QByteArray &text)
{
    for (Line line; line.from < text.size(); line.from = line.to + 1) {
        const auto *const end =
            std::find_if(text.cbegin() + line.from, text.cend(),
                         [](char character) { return character == '\n' || character == '\r'; });
        line.to = static_cast<int>(end - text.cbegin());
        const QByteArray content = text.mid(line.from, line.to - line.from).trimmed();
        if (!holdsNothing(content) && !isComment(content))
            return line;
    }
    return {};
}

bool hasTitle(QByteArray header, char separator, const QByteArray &title)
{
    const QByteArrayList titles = header.replace('"', QByteArray()).split(separator);
    return titles.size() > 1 &&
           std::any_of(titles.begin(), titles.end(),
                       [&](const QByteArray &one) { return one.trimmed().toLower() == title; });
}

} // namespace

char separatorOf(const QByteArray &header, const QByteArray &title)
{
    const auto *const separator =
        std::find_if(std::begin(SEPARATORS), std::end(SEPARATORS),
                     [&](char one) { return hasTitle(header, one, title); });
    return separator == std::end(SEPARATORS) ? '\0' : *separator;
}

char takeSeparator(QByteArray *text, const QByteArray &title)
{
    const Line line = firstLine(*text);
    const QByteArray content = text->mid(line.from, line.to - line.from);
    QByteArray word = content;
    word.replace('"', QByteArray());
    if (word.left(4).toLower() == "sep=" && word.size() >= 5 && isSeparator(word.at(4)) &&
        holdsNothing(word.mid(5))) {
        text->remove(line.from, line.to - line.from);
        return word.at(4);
    }
    const char separator = separatorOf(content, title);
    return separator == '\0' ? ',' : separator;
}

} // namespace kvt
