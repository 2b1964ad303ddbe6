#pragma once

#include "config/NotchProfile.h"
#include "config/NotchServices.h"
#include "config/NotchSettings.h"
#include "config/OverlayController.h"
#include "platform/Platform.h"

#include <QObject>

#include <memory>
#include <vector>

namespace velmora
{

/// Owns all that the overlay shows: the user's settings, the profiles, the services and one
/// controller a screen. Every setting is written to the store the moment it is assigned; one that
/// affects the overlay then throws all controllers away and builds new ones.
///
/// Sizes are points, zone widths relative weights. Nothing is clamped or validated here.
class NotchManager : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool isEnabled READ isEnabled WRITE setEnabled NOTIFY isEnabledChanged)
    Q_PROPERTY(double notchWidth READ notchWidth WRITE setNotchWidth NOTIFY settingsChanged)
    Q_PROPERTY(double notchHeight READ notchHeight WRITE setNotchHeight NOTIFY settingsChanged)
    Q_PROPERTY(double cornerRadius READ cornerRadius WRITE setCornerRadius NOTIFY settingsChanged)
    Q_PROPERTY(double expandedTopPadding READ expandedTopPadding WRITE setExpandedTopPadding NOTIFY
                   settingsChanged)
    Q_PROPERTY(int activeProfileIndex READ activeProfileIndex NOTIFY profilesChanged)

public:
    enum class Zone { farLeft, left, center, right, farRight };

    NotchManager(const Platform &platform, OverlayControllerFactory makeController);
    ~NotchManager() override;

    [[nodiscard]] bool isEnabled() const { return m_isEnabled; }
    void setEnabled(bool enabled);

    [[nodiscard]] const NotchSettings &settings() const { return m_settings; }
    [[nodiscard]] double notchWidth() const { return m_settings.notchWidth; }
    void setNotchWidth(double points);
    [[nodiscard]] double notchHeight() const { return m_settings.notchHeight; }
    void setNotchHeight(double points);
    [[nodiscard]] double cornerRadius() const { return m_settings.cornerRadius; }
    void setCornerRadius(double points);
    [[nodiscard]] double expandedTopPadding() const { return m_settings.expandedTopPadding; }
    void setExpandedTopPadding(double points);

    [[nodiscard]] double zoneWidth(Zone zone) const;
    void setZoneWidth(Zone zone, double weight);
    [[nodiscard]] NotchWidgetType widget(Zone zone) const;
    void setWidget(Zone zone, NotchWidgetType type);

    [[nodiscard]] const std::vector<NotchProfile> &profiles() const { return m_profiles; }
    [[nodiscard]] int activeProfileIndex() const { return m_activeProfileIndex; }

    [[nodiscard]] NotchServices &services() { return m_services; }
    [[nodiscard]] const std::vector<std::unique_ptr<OverlayController>> &controllers() const
    {
        return m_controllers;
    }

    /// Rebuilds the overlay: one new, collapsed controller for each screen, or none while disabled.
    void apply();

    /// Closes all controllers.
    void tearDown();

    /// Takes over the widgets of a profile and makes it the active one. An index out of range is
    /// ignored.
    void switchProfile(int index);

    /// Keeps the present five widgets as a new profile at the end, which becomes the active one.
    void addProfile(const QString &name);

    /// Deletes a profile, never the last one that is left. The widgets on screen stay.
    void removeProfile(int index);

    void renameProfile(int index, const QString &name);

    /// Writes the list and the active index.
    void saveProfiles();

Q_SIGNALS:
    void isEnabledChanged();
    void settingsChanged();
    void profilesChanged();

private:
    void readSettings();
    void readProfiles();
    void assign(double &setting, double value, const QString &key);
    void applyUnlessSuppressed();
    [[nodiscard]] bool isProfileIndex(int index) const;

    KeyValueStore &m_store;
    Screens &m_screens;
    OverlayControllerFactory m_makeController;
    NotchServices m_services;
    bool m_isEnabled = true;
    NotchSettings m_settings;
    std::vector<NotchProfile> m_profiles;
    int m_activeProfileIndex = 0;
    std::vector<std::unique_ptr<OverlayController>> m_controllers;
    bool m_suppressApply = false; ///< while a profile is taken over: one rebuild instead of five
};

} // namespace velmora
