#pragma once

#include "platform/linux/desktop/IniValue.h"

#include <QHash>

#include <vector>

namespace velmora
{

/// An INI text in the notation of QSettings whose values can be replaced one by one. All other
/// lines, comments and foreign keys among them, stay as they are, byte for byte.
class IniDocument
{
public:
    IniDocument() = default;
    explicit IniDocument(const QByteArray &text);

    /// False if some lines make no sense. They are not part of `text()`.
    [[nodiscard]] bool isSound() const { return m_isSound; }

    /// "group/key", or "key" alone. Where a key stands twice, the last one counts.
    [[nodiscard]] std::optional<ini::Value> value(const QString &key) const;

    /// `text` as `ini::formatString` and `ini::formatData` give it.
    void set(const QString &key, const QByteArray &text);

    [[nodiscard]] QByteArray text() const;

private:
    struct Line {
        QByteArray text;    ///< with its end
        QString group;      ///< "" or "group/"
        QByteArray content; ///< right of the equals sign
    };

    void addLine(const QByteArray &line, const QByteArray &uncommented, bool isQuoteOpen);
    void addAssignment(const QByteArray &line, const QByteArray &meaning);
    [[nodiscard]] std::size_t placeInGroup(const QString &group);

    std::vector<Line> m_lines;
    QHash<QString, std::size_t> m_places; ///< of the keys
    QString m_group;                      ///< of the next line while parsing
    bool m_isGroupKnown = true;           ///< false below a heading that makes no sense
    bool m_isSound = true;
};

} // namespace velmora
