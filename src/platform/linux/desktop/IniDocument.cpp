#include "platform/linux/desktop/IniDocument.h"

#include <algorithm>
#include <utility>

namespace velmora
{

namespace
{

const QString general = QStringLiteral("general");

/// The group of the keys below "[name]". "[General]" holds the keys without a group, and
/// "[%General]" the group that is really called so.
QString groupOf(const QByteArray &name)
{
    if (QString::fromLatin1(name).compare(general, Qt::CaseInsensitive) == 0)
        return {};
    if (QString::fromLatin1(name).compare(u"%general", Qt::CaseInsensitive) == 0)
        return QString::fromLatin1(name.mid(1)) + u'/';
    return ini::parseKey(name) + u'/';
}

QByteArray heading(const QString &group)
{
    if (group.isEmpty())
        return "[General]\n";
    const QString name = group.chopped(1);
    const bool isReserved = name.compare(general, Qt::CaseInsensitive) == 0;
    return (isReserved ? "[%" : "[") + ini::formatKey(name) + "]\n";
}

/// One logical line: it may go on after a backslash at the end of a physical one.
struct Extent {
    qsizetype end;     ///< behind the line's end
    qsizetype meaning; ///< where a trailing comment begins, else the same
    bool isQuoteOpen;
};

Extent lineAt(const QByteArray &text, qsizetype begin)
{
    qsizetype first = begin;
    while (first < text.size() && (text[first] == ' ' || text[first] == '\t'))
        ++first;
    bool isComment = false;
    bool isQuoteOpen = false;
    qsizetype comment = -1;
    qsizetype i = first;
    for (; i < text.size() && text[i] != '\n'; ++i) {
        const char character = text[i];
        if (isComment)
            continue;
        isComment = (character == ';' && !isQuoteOpen) || (character == '#' && i == first);
        if (isComment)
            comment = i;
        else if (character == '"')
            isQuoteOpen = !isQuoteOpen;
        else if (character == '\\')
            i += QByteArrayView(text).sliced(i + 1).startsWith("\r\n") ? 2 : 1;
    }
    const qsizetype end = std::min(i + 1, text.size());
    return {end, isComment ? comment : end, isQuoteOpen};
}

} // namespace

IniDocument::IniDocument(const QByteArray &text)
{
    qsizetype begin = text.startsWith("\xef\xbb\xbf") ? 3 : 0;
    while (begin < text.size()) {
        const Extent extent = lineAt(text, begin);
        addLine(text.mid(begin, extent.end - begin), text.mid(begin, extent.meaning - begin),
                extent.isQuoteOpen);
        begin = extent.end;
    }
}

void IniDocument::addLine(const QByteArray &line, const QByteArray &uncommented, bool isQuoteOpen)
{
    const QByteArray meaning = uncommented.trimmed();
    const bool isHeading = meaning.startsWith('[');
    const qsizetype close = meaning.indexOf(']');
    if (meaning.isEmpty()) {
        m_lines.push_back({line, m_group, {}});
    } else if (isHeading && close > 0) {
        m_isGroupKnown = true;
        m_group = groupOf(meaning.mid(1, close - 1).trimmed());
        m_lines.push_back({line, m_group, {}});
    } else if (!isHeading && m_isGroupKnown && !isQuoteOpen && !meaning.contains('\0') &&
               meaning.indexOf('=') > 0) {
        addAssignment(line, meaning);
    } else {
        m_isSound = false;
        m_isGroupKnown = m_isGroupKnown && !isHeading;
    }
}

void IniDocument::addAssignment(const QByteArray &line, const QByteArray &meaning)
{
    const qsizetype equals = meaning.indexOf('=');
    m_places.insert(m_group + ini::parseKey(meaning.left(equals).trimmed()), m_lines.size());
    m_lines.push_back({line, m_group, meaning.mid(equals + 1)});
}

std::optional<ini::Value> IniDocument::value(const QString &key) const
{
    const auto place = m_places.find(key);
    if (place == m_places.end())
        return std::nullopt;
    return ini::parseValue(m_lines[*place].content);
}

void IniDocument::set(const QString &key, const QByteArray &text)
{
    const QString group = key.left(key.indexOf(u'/') + 1);
    const QByteArray line = ini::formatKey(key.mid(group.size())) + '=' + text + '\n';
    if (const auto known = m_places.find(key); known != m_places.end()) {
        m_lines[*known] = {line, group, text};
        return;
    }
    const std::size_t place = placeInGroup(group);
    for (std::size_t &other : m_places) {
        if (other >= place)
            ++other;
    }
    m_lines.insert(m_lines.begin() + static_cast<std::ptrdiff_t>(place), {line, group, text});
    m_places.insert(key, place);
}

/// Behind the last key or the heading of the group: what follows may be a comment on the next one.
std::size_t IniDocument::placeInGroup(const QString &group)
{
    for (std::size_t i = m_lines.size(); i > 0; --i) {
        Line &line = m_lines[i - 1];
        const bool isKeyOrHeading = !line.content.isNull() || line.text.trimmed().startsWith('[');
        if (line.group != group || !isKeyOrHeading)
            continue;
        if (!line.text.endsWith('\n'))
            line.text.append('\n');
        return i;
    }
    if (!m_lines.empty() && !m_lines.back().text.endsWith('\n'))
        m_lines.back().text.append('\n');
    if (!m_lines.empty())
        m_lines.push_back({"\n", m_lines.back().group, {}});
    m_lines.push_back({heading(group), group, {}});
    return m_lines.size();
}

QByteArray IniDocument::text() const
{
    QByteArray text;
    for (const Line &line : m_lines)
        text.append(line.text);
    return text;
}

} // namespace velmora
