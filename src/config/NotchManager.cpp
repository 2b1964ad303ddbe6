#include "config/NotchManager.h"

#include <QLoggingCategory>

#include <algorithm>
#include <array>
#include <utility>

namespace velmora
{

namespace
{

Q_LOGGING_CATEGORY(lcWindowController, "com.velmora.app.WindowController", QtInfoMsg)

using Zone = NotchManager::Zone;

constexpr std::array<Zone, 5> zones{Zone::farLeft, Zone::left, Zone::center, Zone::right,
                                    Zone::farRight};
constexpr std::array<const char *, 5> zoneWidthKeys{
    "farLeftZoneWidth", "leftZoneWidth", "centerZoneWidth", "rightZoneWidth", "farRightZoneWidth"};

std::size_t indexOf(Zone zone)
{
    return static_cast<std::size_t>(zone);
}

QString widgetKey(Zone zone)
{
    return QString::fromLatin1(widgetKeys.at(indexOf(zone)));
}

QString zoneWidthKey(Zone zone)
{
    return QString::fromLatin1(zoneWidthKeys.at(indexOf(zone)));
}

const QString isEnabledKey = QStringLiteral("isEnabled");
const QString activeProfileIndexKey = QStringLiteral("activeProfileIndex");
const QString profilesKey = QStringLiteral("notchProfiles");

} // namespace

NotchManager::NotchManager(const Platform &platform, OverlayControllerFactory makeController)
    : m_store(*platform.store)
    , m_screens(*platform.screens)
    , m_makeController(std::move(makeController))
    , m_services(platform)
{
    readSettings();
    readProfiles();
}

NotchManager::~NotchManager()
{
    tearDown();
}

void NotchManager::readSettings()
{
    const auto number = [this](const QString &key, double &setting) {
        setting = m_store.number(key).value_or(setting);
    };
    m_isEnabled = m_store.boolean(isEnabledKey).value_or(true);
    number(QStringLiteral("notchWidth"), m_settings.notchWidth);
    number(QStringLiteral("notchHeight"), m_settings.notchHeight);
    number(QStringLiteral("cornerRadius"), m_settings.cornerRadius);
    number(QStringLiteral("expandedTopPadding"), m_settings.expandedTopPadding);
    for (const Zone zone : zones) {
        number(zoneWidthKey(zone), m_settings.zoneWidths.at(indexOf(zone)));
        NotchWidgetType &widget = m_settings.widgets.at(indexOf(zone));
        const auto stored = m_store.string(widgetKey(zone));
        widget = stored ? widgetTypeFromRawValue(*stored).value_or(widget) : widget;
    }
}

void NotchManager::readProfiles()
{
    const auto data = m_store.data(profilesKey);
    const auto profiles = data ? decodeProfiles(*data) : std::nullopt;
    // An empty list cannot come from us, and would leave the user nothing to choose from.
    const bool hasProfiles = profiles && !profiles->empty();
    for (const NotchProfile &profile : hasProfiles ? *profiles : NotchProfile::builtIn()) {
        m_profiles.append(profile);
    }
    if (!hasProfiles) {
        m_settings.widgets = m_profiles.all().front().widgets;
        for (const Zone zone : zones) {
            m_store.setString(widgetKey(zone), rawValue(widget(zone)));
        }
    }
    const qint64 stored = m_store.integer(activeProfileIndexKey);
    const bool isIndex = stored >= 0 && stored < m_profiles.rowCount();
    m_profiles.activate(isIndex ? static_cast<int>(stored) : 0);
}

void NotchManager::setEnabled(bool enabled)
{
    m_isEnabled = enabled;
    m_store.setBoolean(isEnabledKey, enabled);
    Q_EMIT isEnabledChanged();
    apply();
}

void NotchManager::assignSize(double &setting, double points, const char *key)
{
    setting = points;
    m_store.setNumber(QString::fromLatin1(key), points);
    Q_EMIT settingsChanged();
    apply();
}

double NotchManager::zoneWidth(Zone zone) const
{
    return m_settings.zoneWidths.at(indexOf(zone));
}

QList<double> NotchManager::zoneWidths() const
{
    return {m_settings.zoneWidths.begin(), m_settings.zoneWidths.end()};
}

void NotchManager::setZoneWidth(Zone zone, double weight)
{
    m_settings.zoneWidths.at(indexOf(zone)) = weight;
    m_store.setNumber(zoneWidthKey(zone), weight);
    Q_EMIT settingsChanged();
    applyUnlessSuppressed();
}

NotchWidgetType NotchManager::widget(Zone zone) const
{
    return m_settings.widgets.at(indexOf(zone));
}

QStringList NotchManager::widgets() const
{
    QStringList texts;
    for (const NotchWidgetType type : m_settings.widgets) {
        texts << rawValue(type);
    }
    return texts;
}

void NotchManager::setWidget(Zone zone, const QString &rawValue)
{
    if (const auto type = widgetTypeFromRawValue(rawValue)) {
        setWidget(zone, *type);
    }
}

void NotchManager::setWidget(Zone zone, NotchWidgetType type)
{
    m_settings.widgets.at(indexOf(zone)) = type;
    m_store.setString(widgetKey(zone), rawValue(type));
    Q_EMIT settingsChanged();
    applyUnlessSuppressed();
}

void NotchManager::applyUnlessSuppressed()
{
    if (!m_suppressApply) {
        apply();
    }
}

void NotchManager::apply()
{
    tearDown();
    if (!m_isEnabled) {
        return;
    }
    for (const auto &screen : m_screens.all()) {
        auto controller = m_makeController(screen, m_settings, m_services);
        qCInfo(lcWindowController,
               "NotchWindowController created for screen \"%s\" width=%f height=%f",
               qUtf8Printable(screen->localizedName()), m_settings.notchWidth,
               m_settings.notchHeight);
        controller->showWindow();
        m_controllers.push_back(std::move(controller));
    }
}

void NotchManager::tearDown()
{
    for (const auto &controller : m_controllers) {
        controller->close();
    }
    m_controllers.clear();
}

void NotchManager::switchProfile(int index)
{
    if (!m_profiles.contains(index)) {
        return;
    }
    m_profiles.activate(index);
    m_store.setInteger(activeProfileIndexKey, index);
    Q_EMIT profilesChanged();
    const ZoneWidgets widgets = profiles().at(static_cast<std::size_t>(index)).widgets;
    m_suppressApply = true;
    for (const Zone zone : zones) {
        setWidget(zone, widgets.at(indexOf(zone)));
    }
    m_suppressApply = false;
    apply();
}

void NotchManager::addProfile(const QString &name)
{
    m_profiles.append({QUuid::createUuid(), name, m_settings.widgets});
    m_profiles.activate(m_profiles.rowCount() - 1);
    saveProfiles();
}

void NotchManager::removeProfile(int index)
{
    if (!m_profiles.contains(index) || m_profiles.rowCount() < 2) {
        return;
    }
    m_profiles.remove(index);
    m_profiles.activate(std::min(activeProfileIndex(), m_profiles.rowCount() - 1));
    saveProfiles();
}

void NotchManager::renameProfile(int index, const QString &name)
{
    if (!m_profiles.contains(index)) {
        return;
    }
    m_profiles.rename(index, name);
    saveProfiles();
}

void NotchManager::saveProfiles()
{
    m_store.setData(profilesKey, encodeProfiles(profiles()));
    m_store.setInteger(activeProfileIndexKey, activeProfileIndex());
    Q_EMIT profilesChanged();
}

} // namespace velmora
