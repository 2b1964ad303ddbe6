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
constexpr std::array<const char *, 5> zoneNames{"farLeft", "left", "center", "right", "farRight"};

std::size_t indexOf(Zone zone)
{
    return static_cast<std::size_t>(zone);
}

QString widgetKey(Zone zone)
{
    return QString::fromLatin1(zoneNames.at(indexOf(zone))) + QStringLiteral("Widget");
}

QString zoneWidthKey(Zone zone)
{
    return QString::fromLatin1(zoneNames.at(indexOf(zone))) + QStringLiteral("ZoneWidth");
}

QString isEnabledKey()
{
    return QStringLiteral("isEnabled");
}
QString notchWidthKey()
{
    return QStringLiteral("notchWidth");
}
QString notchHeightKey()
{
    return QStringLiteral("notchHeight");
}
QString cornerRadiusKey()
{
    return QStringLiteral("cornerRadius");
}
QString expandedTopPaddingKey()
{
    return QStringLiteral("expandedTopPadding");
}
QString profilesKey()
{
    return QStringLiteral("notchProfiles");
}
QString activeProfileIndexKey()
{
    return QStringLiteral("activeProfileIndex");
}

std::array<NotchWidgetType, 5> widgetsOf(const NotchProfile &profile)
{
    return {profile.farLeftWidget, profile.leftWidget, profile.centerWidget, profile.rightWidget,
            profile.farRightWidget};
}

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
    m_isEnabled = m_store.boolean(isEnabledKey()).value_or(true);
    number(notchWidthKey(), m_settings.notchWidth);
    number(notchHeightKey(), m_settings.notchHeight);
    number(cornerRadiusKey(), m_settings.cornerRadius);
    number(expandedTopPaddingKey(), m_settings.expandedTopPadding);
    for (const Zone zone : zones) {
        number(zoneWidthKey(zone), m_settings.zoneWidths.at(indexOf(zone)));
    }
    for (const Zone zone : zones) {
        NotchWidgetType &widget = m_settings.widgets.at(indexOf(zone));
        const auto stored = m_store.string(widgetKey(zone));
        widget = stored ? widgetTypeFromRawValue(*stored).value_or(widget) : widget;
    }
}

void NotchManager::readProfiles()
{
    const auto data = m_store.data(profilesKey());
    auto profiles = data ? decodeProfiles(*data) : std::nullopt;
    // An empty list cannot come from us, and would leave the user nothing to choose from.
    if (profiles && !profiles->empty()) {
        m_profiles = *std::move(profiles);
    } else {
        m_profiles = NotchProfile::builtIn();
        m_settings.widgets = widgetsOf(m_profiles.front());
        for (const Zone zone : zones) {
            m_store.setString(widgetKey(zone), rawValue(widget(zone)));
        }
    }
    const qint64 stored = m_store.integer(activeProfileIndexKey());
    const auto count = static_cast<qint64>(m_profiles.size());
    m_activeProfileIndex = stored >= 0 && stored < count ? static_cast<int>(stored) : 0;
}

void NotchManager::setEnabled(bool enabled)
{
    m_isEnabled = enabled;
    m_store.setBoolean(isEnabledKey(), enabled);
    Q_EMIT isEnabledChanged();
    apply();
}

void NotchManager::assign(double &setting, double value, const QString &key)
{
    setting = value;
    m_store.setNumber(key, value);
    Q_EMIT settingsChanged();
}

void NotchManager::setNotchWidth(double points)
{
    assign(m_settings.notchWidth, points, notchWidthKey());
    apply();
}

void NotchManager::setNotchHeight(double points)
{
    assign(m_settings.notchHeight, points, notchHeightKey());
    apply();
}

void NotchManager::setCornerRadius(double points)
{
    assign(m_settings.cornerRadius, points, cornerRadiusKey());
    apply();
}

void NotchManager::setExpandedTopPadding(double points)
{
    assign(m_settings.expandedTopPadding, points, expandedTopPaddingKey());
    apply();
}

double NotchManager::zoneWidth(Zone zone) const
{
    return m_settings.zoneWidths.at(indexOf(zone));
}

void NotchManager::setZoneWidth(Zone zone, double weight)
{
    assign(m_settings.zoneWidths.at(indexOf(zone)), weight, zoneWidthKey(zone));
    applyUnlessSuppressed();
}

NotchWidgetType NotchManager::widget(Zone zone) const
{
    return m_settings.widgets.at(indexOf(zone));
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

bool NotchManager::isProfileIndex(int index) const
{
    return index >= 0 && static_cast<std::size_t>(index) < m_profiles.size();
}

void NotchManager::switchProfile(int index)
{
    if (!isProfileIndex(index)) {
        return;
    }
    m_activeProfileIndex = index;
    m_store.setInteger(activeProfileIndexKey(), index);
    Q_EMIT profilesChanged();
    const auto widgets = widgetsOf(m_profiles.at(static_cast<std::size_t>(index)));
    m_suppressApply = true;
    for (const Zone zone : zones) {
        setWidget(zone, widgets.at(indexOf(zone)));
    }
    m_suppressApply = false;
    apply();
}

void NotchManager::addProfile(const QString &name)
{
    m_profiles.push_back({QUuid::createUuid(), name, widget(Zone::farLeft), widget(Zone::left),
                          widget(Zone::center), widget(Zone::right), widget(Zone::farRight)});
    m_activeProfileIndex = static_cast<int>(m_profiles.size()) - 1;
    saveProfiles();
}

void NotchManager::removeProfile(int index)
{
    if (!isProfileIndex(index) || m_profiles.size() < 2) {
        return;
    }
    m_profiles.erase(m_profiles.begin() + index);
    m_activeProfileIndex =
        std::clamp(m_activeProfileIndex, 0, static_cast<int>(m_profiles.size()) - 1);
    saveProfiles();
}

void NotchManager::renameProfile(int index, const QString &name)
{
    if (!isProfileIndex(index)) {
        return;
    }
    m_profiles.at(static_cast<std::size_t>(index)).name = name;
    saveProfiles();
}

void NotchManager::saveProfiles()
{
    if (const auto data = encodeProfiles(m_profiles)) {
        m_store.setData(profilesKey(), *data);
    }
    m_store.setInteger(activeProfileIndexKey(), m_activeProfileIndex);
    Q_EMIT profilesChanged();
}

} // namespace velmora
