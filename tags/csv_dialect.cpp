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

/// Returns the first line that is neither blank nor a comment.
Line firstLine(const QByteArray &text)
{
    for (Line line; line.from < text.size(); line.from = line.to + 1) {
        const auto *const end =
            std::find_if(text.cbegin() + line.from, text.cend(),
                         [](char character) { return character == '\n' || character == '\r'; });
        line.to = static_cast<int>(end - text.cbegin());
        const QByteArray content = text.mid(line.from, line.to - line.from).trimmed();
        if (!content.isEmpty() && !content.startsWith('#'))
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

char takeSeparator(QByteArray *text, const QByteArray &title)
{
    const Line line = firstLine(*text);
    const QByteArray content = text->mid(line.from, line.to - line.from);
    QByteArray word = content;
    word.replace('"', QByteArray());
    if (word.left(4).toLower() == "sep=" && word.size() >= 5 && word.mid(5).trimmed().isEmpty() &&
        std::count(std::begin(SEPARATORS), std::end(SEPARATORS), word.at(4)) > 0) {
        text->remove(line.from, line.to - line.from);
        return word.at(4);
    }
    for (const char separator : SEPARATORS)
        if (hasTitle(content, separator, title))
            return separator;
    return ',';
}

} // namespace kvt
