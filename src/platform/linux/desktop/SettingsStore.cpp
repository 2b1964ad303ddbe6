#include "platform/linux/desktop/SettingsStore.h"

#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QLoggingCategory>
#include <QStandardPaths>

#include <cmath>

namespace velmora
{

namespace
{

Q_LOGGING_CATEGORY(lcSettings, "com.velmora.app.Settings", QtInfoMsg)

using namespace std::chrono_literals;

constexpr qint64 largestFile = 16LL * 1024 * 1024;

bool keepAside(const QString &path, bool (*keep)(const QString &from, const QString &to))
{
    for (int number = 1; number <= 100; ++number) {
        const QString name = path + QStringLiteral(".unreadable-%1").arg(number);
        if (!QFileInfo::exists(name)) {
            qCWarning(lcSettings).noquote() << path << "cannot be read, and is kept as" << name;
            return keep(path, name);
        }
    }
    return false;
}

/// Whoever is killed while it takes the lock leaves one without a name, for which QSettings would
/// wait half a minute. Writing takes milliseconds.
void removeStaleLock(const QString &path)
{
    const QString name = path + QStringLiteral(".lock");
    if (QFileInfo::exists(name)) {
        QLockFile lock(name);
        lock.setStaleLockTime(100ms);
        static_cast<void>(lock.tryLock(200ms));
    }
}

/// `path`, unless something else than a settings file is there that will not go away. It must not
/// even be opened: a pipe would wait for its writer.
QString prepared(const QString &path)
{
    removeStaleLock(path);
    const QFileInfo file(path);
    const bool isThere = file.exists() || file.isSymLink();
    const bool isReadable = file.isFile() && file.isReadable() && file.size() <= largestFile;
    if (isThere && !isReadable && !keepAside(path, &QFile::rename)) {
        return path + QStringLiteral("/nowhere"); // assignments stay in memory
    }
    return path;
}

} // namespace

SettingsStore::SettingsStore()
    : SettingsStore(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
                    QStringLiteral("/velmora/velmora.conf"))
{
}

SettingsStore::SettingsStore(const QString &path)
    : m_settings(prepared(path), QSettings::IniFormat)
{
    const QStringList keys = m_settings.allKeys(); // parses it
    if (m_settings.status() != QSettings::FormatError) {
        return;
    }
    if (keys.isEmpty()) {
        keepAside(path, &QFile::rename);
    } else if (keepAside(path, &QFile::copy)) {
        // Has what could be read written as a file without faults.
        m_settings.setValue(keys.constFirst(), m_settings.value(keys.constFirst()));
    }
}

std::optional<bool> SettingsStore::boolean(const QString &key) const
{
    const QString text = string(key).value_or(QString()).toLower();
    if (text == u"true" || text == u"false") {
        return text == u"true";
    }
    const auto value = number(key);
    return value ? std::optional(*value != 0) : std::nullopt;
}

std::optional<double> SettingsStore::number(const QString &key) const
{
    bool isNumber = false;
    const double value = string(key).value_or(QString()).toDouble(&isNumber);
    return isNumber && std::isfinite(value) ? std::optional(value) : std::nullopt;
}

qint64 SettingsStore::integer(const QString &key) const
{
    return string(key).value_or(QString()).toLongLong(); // 0 for all that is no integer
}

std::optional<QString> SettingsStore::string(const QString &key) const
{
    const QVariant value = m_settings.value(key);
    switch (value.typeId()) {
    case QMetaType::Bool:
    case QMetaType::Double:
    case QMetaType::LongLong: // as it was assigned, and as it will read after the next start
    case QMetaType::QString:
        return value.toString();
    default:
        return std::nullopt;
    }
}

std::optional<QByteArray> SettingsStore::data(const QString &key) const
{
    const QVariant value = m_settings.value(key);
    const bool isText = value.typeId() == QMetaType::QString;
    return isText || value.typeId() == QMetaType::QByteArray ? std::optional(value.toByteArray())
                                                             : std::nullopt;
}

void SettingsStore::setNumber(const QString &key, double value)
{
    if (std::isfinite(value)) {
        m_settings.setValue(key, value);
    }
}

} // namespace velmora
