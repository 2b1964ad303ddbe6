#pragma once

#include "platform/KeyValueStore.h"
#include "platform/linux/desktop/IniDocument.h"
#include "platform/linux/desktop/SettingsFile.h"

#include <QMap>
#include <QObject>

namespace velmora
{

/// The defaults store in an INI file of the notation of QSettings. QSettings itself waits without
/// bound for a lock file and for the disk, and decodes whatever object a value claims to hold.
///
/// Assignments of one turn of the main loop are written together when the turn ends. A file that
/// cannot be read is never written; one with lines that make no sense is kept aside first. While
/// writing fails, assignments stay in memory and are tried again with the next one.
class SettingsStore final : public KeyValueStore
{
public:
    /// $XDG_CONFIG_HOME/velmora/velmora.conf
    SettingsStore();
    explicit SettingsStore(const QString &path);
    SettingsStore(const SettingsStore &) = delete;
    SettingsStore &operator=(const SettingsStore &) = delete;
    ~SettingsStore() override;

    [[nodiscard]] std::optional<bool> boolean(const QString &key) const override;
    [[nodiscard]] std::optional<double> number(const QString &key) const override;
    [[nodiscard]] qint64 integer(const QString &key) const override;
    [[nodiscard]] std::optional<QString> string(const QString &key) const override;
    /// Text that was put into the file by hand reads as its UTF-8.
    [[nodiscard]] std::optional<QByteArray> data(const QString &key) const override;

    void setBoolean(const QString &key, bool value) override;
    /// What is not finite is not remembered.
    void setNumber(const QString &key, double value) override;
    void setInteger(const QString &key, qint64 value) override;
    void setString(const QString &key, const QString &value) override;
    void setData(const QString &key, const QByteArray &value) override;

    /// Writes what is not written yet.
    void flush();

private:
    /// Receives the event that ends the turn.
    class TurnEnd final : public QObject
    {
    public:
        explicit TurnEnd(SettingsStore &store);
        void arm();
        void disarm();

    protected:
        bool event(QEvent *event) override;

    private:
        SettingsStore &m_store;
        bool m_isArmed = false;
    };

    [[nodiscard]] std::optional<ini::Value> value(const QString &key) const;
    void assign(const QString &key, const QByteArray &text);
    [[nodiscard]] bool write();
    void report(const QString &problem);

    SettingsFile m_file;
    IniDocument m_document;                  ///< what was last read or written
    QMap<QString, QByteArray> m_assignments; ///< not written yet
    QString m_problem;
    TurnEnd m_turnEnd;
};

} // namespace velmora
