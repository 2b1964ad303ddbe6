#include "platform/linux/desktop/IniValue.h"

#include <QStringDecoder>

#include <algorithm>

namespace velmora::ini
{

namespace
{

const QString dataPrefix = QStringLiteral("@ByteArray(");
const QString textPrefix = QStringLiteral("@String("); // how QSettings puts text with a NUL in it

/// Letter after a backslash, and what the two stand for.
constexpr char escapes[][2] = {{'a', '\a'}, {'b', '\b'}, {'f', '\f'}, {'n', '\n'},  {'r', '\r'},
                               {'t', '\t'}, {'v', '\v'}, {'"', '"'},  {'\'', '\''}, {'\\', '\\'}};

bool isSpace(char character)
{
    return character == ' ' || character == '\t';
}

int digit(char character, int base)
{
    int value = base;
    if (character >= '0' && character <= '9')
        value = character - '0';
    else if (character >= 'a' && character <= 'f')
        value = character - 'a' + 10;
    else if (character >= 'A' && character <= 'F')
        value = character - 'A' + 10;
    return value < base ? value : -1;
}

/// Takes a value apart: quotes, escapes, UTF-8.
class Unescaper
{
public:
    explicit Unescaper(const QByteArray &text)
        : m_text(text)
    {
    }

    /// Nothing for a list, and for text that is no UTF-8.
    std::optional<QString> run()
    {
        while (m_position < m_text.size() && isSpace(m_text[m_position]))
            ++m_position;
        while (m_position < m_text.size()) {
            const char character = m_text[m_position++];
            if (character == '\\') {
                takeEscape();
            } else if (character == '"') {
                endRun();
                m_isQuoted = !m_isQuoted;
                m_trailingSpaces = 0;
            } else if (character == ',' && !m_isQuoted) {
                return std::nullopt;
            } else {
                m_run.append(character);
                if (m_isQuoted || !isSpace(character))
                    m_trailingSpaces = 0;
                else
                    ++m_trailingSpaces;
            }
        }
        m_run.chop(m_trailingSpaces);
        endRun();
        return m_isValid ? std::optional(m_result) : std::nullopt;
    }

private:
    void takeEscape()
    {
        endRun();
        m_trailingSpaces = 0;
        if (m_position >= m_text.size())
            return;
        const char letter = m_text[m_position++];
        const auto *const known = std::find_if(std::begin(escapes), std::end(escapes),
                                               [letter](auto pair) { return pair[0] == letter; });
        if (known != std::end(escapes)) {
            m_result.append(QLatin1Char((*known)[1]));
        } else if (letter == 'x') {
            takeNumber(16);
        } else if (digit(letter, 8) >= 0) {
            --m_position;
            takeNumber(8);
        } else if (letter == '\r' && m_position < m_text.size() && m_text[m_position] == '\n') {
            ++m_position; // the value goes on in the next line
        }
    }

    void takeNumber(int base)
    {
        unsigned value = 0;
        bool isEmpty = true;
        for (; m_position < m_text.size(); ++m_position, isEmpty = false) {
            const int next = digit(m_text[m_position], base);
            if (next < 0)
                break;
            value = value * static_cast<unsigned>(base) + static_cast<unsigned>(next);
        }
        if (!isEmpty)
            m_result.append(QChar(static_cast<char16_t>(value)));
    }

    void endRun()
    {
        QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
        const QString decoded = decoder(m_run);
        m_result.append(decoded);
        m_isValid = m_isValid && !decoder.hasError();
        m_run.clear();
    }

    const QByteArray &m_text;
    qsizetype m_position = 0;
    QString m_result;
    QByteArray m_run; ///< plain bytes since the last escape or quote
    qsizetype m_trailingSpaces = 0;
    bool m_isQuoted = false;
    bool m_isValid = true;
};

/// Puts a value together. What follows an escape of open length and could be taken for a digit of
/// it is escaped as well.
class Escaper
{
public:
    void add(char16_t unit)
    {
        if (unit == '"' || unit == '\\')
            m_result.append('\\').append(static_cast<char>(unit));
        else if (unit == '\n')
            m_result.append("\\n");
        else if (unit == '\r')
            m_result.append("\\r");
        else if (unit == '\t')
            m_result.append("\\t");
        else if (unit < 0x20 || unit >= 0x7f ||
                 (m_isOpen && digit(static_cast<char>(unit), 16) >= 0))
            return addNumber(unit);
        else
            m_result.append(static_cast<char>(unit));
        m_isOpen = false;
    }

    void addUtf8(QStringView text)
    {
        m_result.append(text.toUtf8());
        m_isOpen = false;
    }

    [[nodiscard]] const QByteArray &result() const { return m_result; }

private:
    void addNumber(char16_t unit)
    {
        m_result.append("\\x").append(QByteArray::number(unit, 16));
        m_isOpen = true;
    }

    QByteArray m_result;
    bool m_isOpen = false;
};

/// Quotes what would otherwise be cut at a separator or trimmed.
QByteArray quotedIfNeeded(const QByteArray &escaped)
{
    const bool hasSeparator = std::any_of(escaped.begin(), escaped.end(),
                                          [](char c) { return c == ';' || c == ',' || c == '='; });
    const bool hasOuterSpace =
        !escaped.isEmpty() && (isSpace(escaped.front()) || isSpace(escaped.back()));
    return hasSeparator || hasOuterSpace ? '"' + escaped + '"' : escaped;
}

bool isPlainInKey(char16_t unit)
{
    return (unit >= '0' && unit <= '9') || (unit >= 'a' && unit <= 'z') ||
           (unit >= 'A' && unit <= 'Z') || unit == '_' || unit == '-' || unit == '.';
}

} // namespace

std::optional<Value> parseValue(const QByteArray &text)
{
    auto string = Unescaper(text).run();
    if (!string)
        return std::nullopt;
    if (!string->startsWith(u'@'))
        return Value(*std::move(string));
    if (string->startsWith(u"@@"))
        return Value(string->mid(1));
    if (!string->endsWith(u')'))
        return std::nullopt;
    if (string->startsWith(textPrefix))
        return Value(string->mid(textPrefix.size()).chopped(1));
    if (!string->startsWith(dataPrefix))
        return std::nullopt;

    const auto content = QStringView(*string).mid(dataPrefix.size()).chopped(1);
    const bool isBytes =
        std::all_of(content.begin(), content.end(), [](QChar c) { return c.unicode() <= 0xff; });
    return isBytes ? std::optional(Value(content.toLatin1())) : std::nullopt;
}

QByteArray formatString(const QString &value)
{
    Escaper escaper;
    if (value.startsWith(u'@'))
        escaper.add(u'@');
    for (qsizetype i = 0; i < value.size(); ++i) {
        const QChar unit = value[i];
        const bool isPair =
            unit.isHighSurrogate() && i + 1 < value.size() && value[i + 1].isLowSurrogate();
        if (unit.unicode() < 0x80 || (unit.isSurrogate() && !isPair)) {
            escaper.add(unit.unicode());
            continue;
        }
        const qsizetype length = isPair ? 2 : 1;
        escaper.addUtf8(QStringView(value).mid(i, length));
        i += length - 1;
    }
    return quotedIfNeeded(escaper.result());
}

QByteArray formatData(const QByteArray &value)
{
    Escaper escaper;
    for (const QChar unit : dataPrefix)
        escaper.add(unit.unicode());
    for (const char byte : value)
        escaper.add(static_cast<unsigned char>(byte));
    escaper.add(u')');
    return quotedIfNeeded(escaper.result());
}

QString parseKey(const QByteArray &text)
{
    QString key;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == '\\') {
            key.append(u'/');
            continue;
        }
        if (text[i] == '%') {
            const bool isWide = i + 1 < text.size() && text[i + 1] == 'U';
            const qsizetype first = i + (isWide ? 2 : 1);
            const qsizetype length = isWide ? 4 : 2;
            bool isNumber = false;
            const auto code = text.mid(first, length).toUShort(&isNumber, 16);
            if (isNumber && first + length <= text.size()) {
                key.append(QChar(code));
                i = first + length - 1;
                continue;
            }
        }
        key.append(QLatin1Char(text[i]));
    }
    return key;
}

QByteArray formatKey(const QString &key)
{
    QByteArray text;
    for (const QChar character : key) {
        const char16_t unit = character.unicode();
        if (isPlainInKey(unit))
            text.append(static_cast<char>(unit));
        else if (unit == '/')
            text.append('\\');
        else if (unit <= 0xff)
            text.append('%').append(QByteArray::number(unit, 16).toUpper().rightJustified(2, '0'));
        else
            text.append("%U").append(QByteArray::number(unit, 16).toUpper().rightJustified(4, '0'));
    }
    return text;
}

} // namespace velmora::ini
