#pragma once

#include <QByteArray>
#include <QByteArrayView>

namespace velmora
{

/// A line of an iCalendar text, with its continuation lines.
struct ContentLine {
    QByteArray name; ///< in capitals
    QByteArrayView raw;
    qsizetype begin = 0;
    qsizetype end = 0; ///< behind its line break

    /// Of a short line such as "BEGIN:VEVENT", in capitals.
    [[nodiscard]] QByteArray value() const
    {
        return raw.sliced(qMin(name.size() + 1, raw.size())).trimmed().toByteArray().toUpper();
    }
};

/// Calls `visit` with each line, without understanding any.
template<typename Visit>
void forEachLine(QByteArrayView text, Visit visit)
{
    constexpr QByteArrayView byteOrderMark = "\xEF\xBB\xBF";
    qsizetype position = text.startsWith(byteOrderMark) ? byteOrderMark.size() : 0;
    while (position < text.size()) {
        ContentLine line;
        line.begin = position;
        do {
            const qsizetype lineBreak = text.indexOf('\n', position);
            position = lineBreak < 0 ? text.size() : lineBreak + 1;
        } while (position < text.size() && (text[position] == ' ' || text[position] == '\t'));
        line.end = position;
        line.raw = text.sliced(line.begin, line.end - line.begin);
        qsizetype length = 0;
        while (length < line.raw.size() && line.raw[length] > ' ' && line.raw[length] != ':' &&
               line.raw[length] != ';') {
            ++length;
        }
        line.name = line.raw.first(length).toByteArray().toUpper();
        visit(line);
    }
}

} // namespace velmora
