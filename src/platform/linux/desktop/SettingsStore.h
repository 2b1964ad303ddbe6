#pragma once

#include "platform/KeyValueStore.h"

#include <QSettings>

namespace velmora
{

/// The defaults store in an INI file. The assignments of one turn of the main loop are written
/// together, by a replacement of the file. What cannot be read is kept beside it, as
/// ".unreadable-1" and so on; as long as nothing can be written, assignments stay in memory.
class SettingsStore final : public KeyValueStore
{
public:
    /// $XDG_CONFIG_HOME/velmora/velmora.conf
    SettingsStore();
    explicit SettingsStore(const QString &path);

    [[nodiscard]] std::optional<bool> boolean(const QString &key) const override;
    [[nodiscard]] std::optional<double> number(const QString &key) const override;
    [[nodiscard]] qint64 integer(const QString &key) const override;
    [[nodiscard]] std::optional<QString> string(const QString &key) const override;
    /// Text that was put into the file by hand reads as its UTF-8.
    [[nodiscard]] std::optional<QByteArray> data(const QString &key) const override;

    void setBoolean(const QString &key, bool value) override { m_settings.setValue(key, value); }
    /// What is not finite is not remembered.
    void setNumber(const QString &key, double value) override;
    void setInteger(const QString &key, qint64 value) override { m_settings.setValue(key, value); }
    void setString(const QString &key, const QString &value) override
    {
        m_settings.setValue(key, value);
    }
    void setData(const QString &key, const QByteArray &value) override
    {
        m_settings.setValue(key, value);
    }

private:
    QSettings m_settings;
};

} // namespace velmora
