#pragma once

#include <charconv>
#include <cstdint>
#include <optional>
#include <string_view>

namespace velmora
{

/// Walks over a text by lines, words and numbers without copying any of it.
class TextScanner
{
public:
    explicit TextScanner(std::string_view text)
        : m_rest(text)
    {
    }

    [[nodiscard]] bool atEnd() const { return m_rest.empty(); }

    /// Takes the next line, without its end.
    std::string_view line() { return take(m_rest.find('\n'), 1); }

    /// Takes what comes before `separator`, and the separator; nothing if there is none.
    std::optional<std::string_view> until(char separator)
    {
        skipSpaces();
        const auto position = m_rest.find(separator);
        if (position == std::string_view::npos)
            return std::nullopt;
        return take(position, 1);
    }

    /// Takes one decimal number that is followed by a space or the end; else nothing is taken.
    std::optional<std::uint64_t> number()
    {
        skipSpaces();
        std::uint64_t value = 0;
        const char *const end = m_rest.data() + m_rest.size();
        const auto [next, error] = std::from_chars(m_rest.data(), end, value);
        if (error != std::errc() || (next != end && *next != ' '))
            return std::nullopt;
        m_rest.remove_prefix(static_cast<std::size_t>(next - m_rest.data()));
        return value;
    }

    bool skip(std::string_view prefix)
    {
        if (m_rest.substr(0, prefix.size()) != prefix)
            return false;
        m_rest.remove_prefix(prefix.size());
        return true;
    }

private:
    void skipSpaces()
    {
        const auto first = m_rest.find_first_not_of(' ');
        m_rest.remove_prefix(first == std::string_view::npos ? m_rest.size() : first);
    }

    std::string_view take(std::size_t length, std::size_t separator)
    {
        const auto taken = m_rest.substr(0, length);
        m_rest.remove_prefix(length == std::string_view::npos ? m_rest.size() : length + separator);
        return taken;
    }

    std::string_view m_rest;
};

} // namespace velmora
