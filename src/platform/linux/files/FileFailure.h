#pragma once

#include <QByteArray>
#include <QString>

#include <atomic>

namespace velmora
{

/// What goes wrong with a file, thrown inside a worker thread and turned into text at its border.
class FileFailure
{
public:
    /// `code` is an errno value.
    FileFailure(const QByteArray &path, int code);
    FileFailure(const QByteArray &path, const QString &reason);

    /// "name: reason"
    [[nodiscard]] const QString &text() const { return m_text; }

private:
    QString m_text;
};

/// Set when the program is about to end: whoever copies looks at it from time to time.
using CancelFlag = std::atomic<bool>;

} // namespace velmora
