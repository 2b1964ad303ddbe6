#pragma once

#include "platform/StatusItem.h"
#include "platform/linux/desktop/DBusMenuTypes.h"
#include "platform/linux/desktop/MenuTree.h"

#include <QDBusContext>
#include <QDBusVariant>
#include <QObject>
#include <QStringList>

namespace velmora
{

/// A menu that hosts draw and press: the interface com.canonical.dbusmenu, version 3.
///
/// The caller exports the object with its scriptable contents. A call that names an entry that does
/// not exist, or no longer, is answered with an error and changes nothing.
class DBusMenu : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.canonical.dbusmenu")
    Q_PROPERTY(uint Version READ version CONSTANT)
    Q_PROPERTY(QString TextDirection READ textDirection CONSTANT)
    Q_PROPERTY(QString Status READ status CONSTANT)
    Q_PROPERTY(QStringList IconThemePath READ iconThemePath CONSTANT)

public:
    DBusMenu();

    /// Replaces the menu and tells the hosts.
    void setMenu(const Menu &menu);

    [[nodiscard]] uint version() const { return 3; }
    [[nodiscard]] QString textDirection() const;
    [[nodiscard]] QString status() const { return QStringLiteral("normal"); }
    [[nodiscard]] QStringList iconThemePath() const { return {}; }

public Q_SLOTS:
    // Qt finds the types of these by the spelling here: no aliases, and with the namespace.

    /// The layout below an entry, `recursionDepth` levels deep; all levels if it is negative.
    Q_SCRIPTABLE uint GetLayout(int parentId, int recursionDepth, const QStringList &propertyNames,
                                velmora::DBusMenuLayout &layout);
    Q_SCRIPTABLE QList<velmora::DBusMenuProperties>
    GetGroupProperties(const QList<int> &ids, const QStringList &propertyNames);
    Q_SCRIPTABLE QDBusVariant GetProperty(int id, const QString &name);
    Q_SCRIPTABLE void Event(int id, const QString &eventId, const QDBusVariant &data,
                            uint timestamp);
    Q_SCRIPTABLE QList<int> EventGroup(const QList<velmora::DBusMenuEvent> &events);
    Q_SCRIPTABLE bool AboutToShow(int id);
    Q_SCRIPTABLE QList<int> AboutToShowGroup(const QList<int> &ids, QList<int> &idErrors);

Q_SIGNALS:
    Q_SCRIPTABLE void LayoutUpdated(uint revision, int parent);

private:
    [[nodiscard]] DBusMenuLayout layoutOf(int id, const MenuTree::Entry &entry, int depth,
                                          const QStringList &propertyNames) const;
    void handleEvent(const MenuTree::Entry &entry, const QString &eventId);
    /// Null, with an error as the answer, if there is no such entry.
    const MenuTree::Entry *find(int id) const;
    void refuse() const;

    MenuTree m_tree;
    uint m_revision = 1;
};

} // namespace velmora
