#pragma once

#include "config/NotchProfileList.h"
#include "config/NotchServices.h"
#include "config/NotchSettings.h"
#include "config/OverlayController.h"
#include "platform/Platform.h"

#include <QList>
#include <QObject>
#include <QStringList>
#include <QtQml/qqml.h>

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
    QML_ELEMENT
    QML_UNCREATABLE("Handed down to the views")
    Q_PROPERTY(bool isEnabled READ isEnabled WRITE setEnabled NOTIFY isEnabledChanged FINAL)
    Q_PROPERTY(double notchWidth READ notchWidth WRITE setNotchWidth NOTIFY settingsChanged FINAL)
    Q_PROPERTY(
        double notchHeight READ notchHeight WRITE setNotchHeight NOTIFY settingsChanged FINAL)
    Q_PROPERTY(
        double cornerRadius READ cornerRadius WRITE setCornerRadius NOTIFY settingsChanged FINAL)
    Q_PROPERTY(double expandedTopPadding READ expandedTopPadding WRITE setExpandedTopPadding NOTIFY
                   settingsChanged FINAL)
    // Of the zones, in their order.
    Q_PROPERTY(QList<double> zoneWidths READ zoneWidths NOTIFY settingsChanged FINAL)
    Q_PROPERTY(QStringList widgets READ widgets NOTIFY settingsChanged FINAL)
    Q_PROPERTY(velmora::NotchProfileList *profiles READ profileList CONSTANT FINAL)
    Q_PROPERTY(int activeProfileIndex READ activeProfileIndex NOTIFY profilesChanged FINAL)

public:
    enum class Zone { farLeft, left, center, right, farRight };
    Q_ENUM(Zone)

    NotchManager(const Platform &platform, OverlayControllerFactory makeController);
    ~NotchManager() override;

    [[nodiscard]] bool isEnabled() const { return m_isEnabled; }
    void setEnabled(bool enabled);

    [[nodiscard]] const NotchSettings &settings() const { return m_settings; }
    [[nodiscard]] double notchWidth() const { return m_settings.notchWidth; }
    void setNotchWidth(double points) { assignSize(m_settings.notchWidth, points, "notchWidth"); }
    [[nodiscard]] double notchHeight() const { return m_settings.notchHeight; }
    void setNotchHeight(double points)
    {
        assignSize(m_settings.notchHeight, points, "notchHeight");
    }
    [[nodiscard]] double cornerRadius() const { return m_settings.cornerRadius; }
    void setCornerRadius(double points)
    {
        assignSize(m_settings.cornerRadius, points, "cornerRadius");
    }
    [[nodiscard]] double expandedTopPadding() const { return m_settings.expandedTopPadding; }
    void setExpandedTopPadding(double points)
    {
        assignSize(m_settings.expandedTopPadding, points, "expandedTopPadding");
    }

    [[nodiscard]] double zoneWidth(Zone zone) const;
    [[nodiscard]] QList<double> zoneWidths() const;
    Q_INVOKABLE void setZoneWidth(velmora::NotchManager::Zone zone, double weight);
    [[nodiscard]] NotchWidgetType widget(Zone zone) const;
    /// The stored texts.
    [[nodiscard]] QStringList widgets() const;
    void setWidget(Zone zone, NotchWidgetType type);
    /// A text that stands for no widget is ignored.
    Q_INVOKABLE void setWidget(velmora::NotchManager::Zone zone, const QString &rawValue);

    [[nodiscard]] NotchProfileList *profileList() { return &m_profiles; }
    [[nodiscard]] const std::vector<NotchProfile> &profiles() const { return m_profiles.all(); }
    [[nodiscard]] int activeProfileIndex() const { return m_profiles.activeIndex(); }

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
    Q_INVOKABLE void switchProfile(int index);

    /// Keeps the present five widgets as a new profile at the end, which becomes the active one.
    Q_INVOKABLE void addProfile(const QString &name);

    /// Deletes a profile, never the last one that is left. The widgets on screen stay.
    Q_INVOKABLE void removeProfile(int index);

    Q_INVOKABLE void renameProfile(int index, const QString &name);

    /// Writes the list and the active index.
    void saveProfiles();

Q_SIGNALS:
    void isEnabledChanged();
    void settingsChanged();
    void profilesChanged();

private:
    void readSettings();
    void readProfiles();
    void assignSize(double &setting, double points, const char *key);
    void applyUnlessSuppressed();

    KeyValueStore &m_store;
    Screens &m_screens;
    OverlayControllerFactory m_makeController;
    NotchServices m_services;
    bool m_isEnabled = true;
    NotchSettings m_settings;
    NotchProfileList m_profiles;
    std::vector<std::unique_ptr<OverlayController>> m_controllers;
    bool m_suppressApply = false; ///< while a profile is taken over: one rebuild instead of five
};

} // namespace velmora
