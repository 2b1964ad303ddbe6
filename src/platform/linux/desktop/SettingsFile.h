#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace velmora
{

/// A small file that is only ever replaced as a whole, so that whoever ends the program at any
/// moment leaves the old text or the new one. No call waits for another process.
class SettingsFile
{
public:
    explicit SettingsFile(QString path);

    /// The text, empty if there is no such file. Nothing if there is something that cannot be read.
    [[nodiscard]] std::optional<QByteArray> read();

    /// Gives the present text a second name, ".broken-1" and so on. False if that fails.
    [[nodiscard]] bool keepAside();

    /// False if the file cannot be written; then it is as it was.
    [[nodiscard]] bool replace(const QByteArray &text);

    /// Why the last call failed.
    [[nodiscard]] QString errorString() const { return m_error; }

private:
    [[nodiscard]] QString target() const;
    [[nodiscard]] bool writeNew(int descriptor, const QString &name, const QByteArray &text);
    bool fail(const QString &doing, const QString &name, int error);

    QString m_path;
    QString m_error;
};

} // namespace velmora
