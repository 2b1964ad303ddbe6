#pragma once

#include "platform/linux/desktop/BusStructure.h"

#include <QDBusObjectPath>
#include <QImage>
#include <QList>
#include <QMetaType>
#include <QObject>
#include <QString>

namespace velmora
{

/// Signature (iiay): width, height and the pixels as ARGB32 with the most significant byte first.
struct StatusNotifierPixmap {
    int width = 0;
    int height = 0;
    QByteArray pixels;

    static auto members(auto &self) { return std::tie(self.width, self.height, self.pixels); }
};
using StatusNotifierPixmapList = QList<StatusNotifierPixmap>;

/// Signature (sa(iiay)ss).
struct StatusNotifierToolTip {
    QString iconName;
    StatusNotifierPixmapList iconPixmap;
    QString title;
    QString text;

    static auto members(auto &self)
    {
        return std::tie(self.iconName, self.iconPixmap, self.title, self.text);
    }
};

[[nodiscard]] StatusNotifierPixmap toStatusNotifierPixmap(const QImage &image);

/// What a tray host reads of the program: the interface org.kde.StatusNotifierItem.
///
/// The item is nothing but its menu. Hosts open that by themselves; whatever else they call is
/// answered and has no effect. The caller exports the object with its scriptable contents.
class StatusNotifierItem : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierItem")
    Q_PROPERTY(QString Category READ category CONSTANT)
    Q_PROPERTY(QString Id READ id CONSTANT)
    Q_PROPERTY(QString Title READ title CONSTANT)
    Q_PROPERTY(QString Status READ status CONSTANT)
    Q_PROPERTY(int WindowId READ windowId CONSTANT)
    Q_PROPERTY(QString IconThemePath READ none CONSTANT)
    Q_PROPERTY(QDBusObjectPath Menu READ menu CONSTANT)
    Q_PROPERTY(bool ItemIsMenu READ itemIsMenu CONSTANT)
    Q_PROPERTY(QString IconName READ iconName CONSTANT)
    Q_PROPERTY(velmora::StatusNotifierPixmapList IconPixmap READ iconPixmap CONSTANT)
    Q_PROPERTY(QString IconAccessibleDesc READ iconAccessibleDesc CONSTANT)
    Q_PROPERTY(QString OverlayIconName READ none CONSTANT)
    Q_PROPERTY(velmora::StatusNotifierPixmapList OverlayIconPixmap READ noPixmap CONSTANT)
    Q_PROPERTY(QString AttentionIconName READ none CONSTANT)
    Q_PROPERTY(velmora::StatusNotifierPixmapList AttentionIconPixmap READ noPixmap CONSTANT)
    Q_PROPERTY(QString AttentionMovieName READ none CONSTANT)
    Q_PROPERTY(QString AttentionAccessibleDesc READ none CONSTANT)
    Q_PROPERTY(velmora::StatusNotifierToolTip ToolTip READ toolTip CONSTANT)

public:
    StatusNotifierItem();

    /// Where the caller exports the menu.
    [[nodiscard]] static QString menuPath() { return QStringLiteral("/MenuBar"); }

    [[nodiscard]] QString category() const { return QStringLiteral("ApplicationStatus"); }
    [[nodiscard]] QString id() const { return QStringLiteral("velmora"); }
    [[nodiscard]] QString title() const { return QStringLiteral("Velmora"); }
    [[nodiscard]] QString status() const { return QStringLiteral("Active"); }
    [[nodiscard]] int windowId() const { return 0; }
    [[nodiscard]] QDBusObjectPath menu() const { return QDBusObjectPath(menuPath()); }
    [[nodiscard]] bool itemIsMenu() const { return true; }
    [[nodiscard]] QString iconName() const { return m_iconName; }
    [[nodiscard]] StatusNotifierPixmapList iconPixmap() const { return m_iconPixmap; }
    [[nodiscard]] QString iconAccessibleDesc() const { return QStringLiteral("Notch"); }
    [[nodiscard]] StatusNotifierToolTip toolTip() const { return {{}, {}, title(), {}}; }
    [[nodiscard]] QString none() const { return {}; }
    [[nodiscard]] StatusNotifierPixmapList noPixmap() const { return {}; }

public Q_SLOTS:
    Q_SCRIPTABLE void Activate(int /*x*/, int /*y*/) {}
    Q_SCRIPTABLE void SecondaryActivate(int /*x*/, int /*y*/) {}
    Q_SCRIPTABLE void ContextMenu(int /*x*/, int /*y*/) {}
    Q_SCRIPTABLE void Scroll(int /*delta*/, const QString & /*orientation*/) {}
    Q_SCRIPTABLE void ProvideXdgActivationToken(const QString & /*token*/) {}

private:
    QString m_iconName;
    StatusNotifierPixmapList m_iconPixmap;
};

} // namespace velmora

Q_DECLARE_METATYPE(velmora::StatusNotifierPixmap)
Q_DECLARE_METATYPE(velmora::StatusNotifierToolTip)
