#include "platform/linux/desktop/SettingsStore.h"

#include <QCoreApplication>
#include <QEvent>
#include <QLocale>
#include <QLoggingCategory>
#include <QStandardPaths>

#include <cmath>
#include <utility>

Q_LOGGING_CATEGORY(lcSettings, "com.velmora.app.Settings", QtInfoMsg)

namespace velmora
{

SettingsStore::SettingsStore()
    : SettingsStore(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
                    QStringLiteral("/velmora/velmora.conf"))
{
}

SettingsStore::SettingsStore(const QString &path)
    : m_file(path)
    , m_turnEnd(*this)
{
    if (const auto text = m_file.read()) {
        m_document = IniDocument(*text);
        if (!m_document.isSound())
            report(QStringLiteral("%1 has lines that make no sense").arg(path));
    } else {
        report(m_file.errorString());
    }
}

SettingsStore::~SettingsStore()
{
    flush();
}

std::optional<bool> SettingsStore::boolean(const QString &key) const
{
    const auto text = string(key);
    if (!text)
        return std::nullopt;
    if (text->compare(u"true", Qt::CaseInsensitive) == 0)
        return true;
    if (text->compare(u"false", Qt::CaseInsensitive) == 0)
        return false;
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
    const auto stored = value(key);
    const auto *const text = stored ? std::get_if<QString>(&*stored) : nullptr;
    return text ? std::optional(*text) : std::nullopt;
}

std::optional<QByteArray> SettingsStore::data(const QString &key) const
{
    const auto stored = value(key);
    if (!stored)
        return std::nullopt;
    if (const auto *const text = std::get_if<QString>(&*stored))
        return text->toUtf8();
    return std::get<QByteArray>(*stored);
}

void SettingsStore::setBoolean(const QString &key, bool value)
{
    assign(key, value ? "true" : "false");
}

void SettingsStore::setNumber(const QString &key, double value)
{
    if (std::isfinite(value))
        assign(key, QByteArray::number(value, 'g', QLocale::FloatingPointShortest));
}

void SettingsStore::setInteger(const QString &key, qint64 value)
{
    assign(key, QByteArray::number(value));
}

void SettingsStore::setString(const QString &key, const QString &value)
{
    assign(key, ini::formatString(value));
}

void SettingsStore::setData(const QString &key, const QByteArray &value)
{
    assign(key, ini::formatData(value));
}

void SettingsStore::flush()
{
    m_turnEnd.disarm();
    if (m_assignments.isEmpty() || !write())
        return;
    m_assignments.clear();
    m_problem.clear();
}

std::optional<ini::Value> SettingsStore::value(const QString &key) const
{
    if (const auto fresh = m_assignments.find(key); fresh != m_assignments.end())
        return ini::parseValue(*fresh);
    return m_document.value(key);
}

void SettingsStore::assign(const QString &key, const QByteArray &text)
{
    m_assignments.insert(key, text);
    m_turnEnd.arm();
}

bool SettingsStore::write()
{
    // Read anew, since the user may have edited the file while we run.
    const auto present = m_file.read();
    if (!present) {
        report(m_file.errorString());
        return false;
    }
    IniDocument document(*present);
    const bool isSound = document.isSound();
    for (auto it = m_assignments.cbegin(); it != m_assignments.cend(); ++it)
        document.set(it.key(), it.value());
    const QByteArray text = document.text();
    const bool isUnchanged = isSound && text == *present;
    if (!isUnchanged && ((!isSound && !m_file.keepAside()) || !m_file.replace(text))) {
        report(m_file.errorString());
        return false;
    }
    m_document = std::move(document);
    return true;
}

/// Once for each new problem, not once for each assignment.
void SettingsStore::report(const QString &problem)
{
    if (m_problem == problem)
        return;
    m_problem = problem;
    qCWarning(lcSettings).noquote() << problem;
}

SettingsStore::TurnEnd::TurnEnd(SettingsStore &store)
    : m_store(store)
{
}

/// The event comes before all others that wait and before timers, so that no task of the next turn
/// runs with this turn's assignments unwritten.
void SettingsStore::TurnEnd::arm()
{
    if (std::exchange(m_isArmed, true))
        return;
    QCoreApplication::postEvent(this, new QEvent(QEvent::User), Qt::HighEventPriority);
}

void SettingsStore::TurnEnd::disarm()
{
    if (std::exchange(m_isArmed, false))
        QCoreApplication::removePostedEvents(this, QEvent::User);
}

bool SettingsStore::TurnEnd::event(QEvent *event)
{
    if (event->type() != QEvent::User)
        return QObject::event(event);
    m_store.flush();
    return true;
}

} // namespace velmora
