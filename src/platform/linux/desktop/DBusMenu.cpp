#include "platform/linux/desktop/DBusMenu.h"

#include <QDBusError>
#include <QDBusMetaType>
#include <QGuiApplication>
#include <QSet>

namespace velmora
{

DBusMenu::DBusMenu()
{
    qDBusRegisterMetaType<DBusMenuLayout>();
    qDBusRegisterMetaType<DBusMenuProperties>();
    qDBusRegisterMetaType<QList<DBusMenuProperties>>();
    qDBusRegisterMetaType<DBusMenuEvent>();
    qDBusRegisterMetaType<QList<DBusMenuEvent>>();
    qDBusRegisterMetaType<DBusMenuShortcut>();
}

void DBusMenu::setMenu(const Menu &menu)
{
    m_tree.replace(menu);
    ++m_revision;
    Q_EMIT LayoutUpdated(m_revision, MenuTree::rootId);
}

QString DBusMenu::textDirection() const
{
    return QGuiApplication::isRightToLeft() ? QStringLiteral("rtl") : QStringLiteral("ltr");
}

uint DBusMenu::GetLayout(int parentId, int recursionDepth, const QStringList &propertyNames,
                         DBusMenuLayout &layout)
{
    if (const MenuTree::Entry *entry = find(parentId))
        layout = layoutOf(parentId, *entry, recursionDepth, propertyNames);
    return m_revision;
}

QList<DBusMenuProperties> DBusMenu::GetGroupProperties(const QList<int> &ids,
                                                       const QStringList &propertyNames)
{
    // Hosts ask for a whole group at once, often while a new layout is on its way to them. What is
    // gone is left out, so that they still get the rest; and however long and repetitive the
    // question, the answer has each entry once.
    const QSet<int> wanted(ids.begin(), ids.end());
    QList<DBusMenuProperties> list;
    for (const auto &[id, entry] : m_tree.entries()) {
        if (wanted.isEmpty() || wanted.contains(id))
            list.append({id, selectProperties(entry.properties, propertyNames)});
    }
    if (list.isEmpty())
        refuse();
    return list;
}

QDBusVariant DBusMenu::GetProperty(int id, const QString &name)
{
    const MenuTree::Entry *entry = find(id);
    if (entry != nullptr && entry->properties.contains(name))
        return QDBusVariant(entry->properties.value(name));
    refuse();
    return QDBusVariant(QString()); // which is not sent, but has to be of some type
}

void DBusMenu::Event(int id, const QString &eventId, const QDBusVariant & /*data*/,
                     uint /*timestamp*/)
{
    if (const MenuTree::Entry *entry = find(id))
        handleEvent(*entry, eventId);
}

QList<int> DBusMenu::EventGroup(const QList<DBusMenuEvent> &events)
{
    QList<int> missing;
    for (const DBusMenuEvent &event : events) {
        if (const MenuTree::Entry *entry = m_tree.find(event.id))
            handleEvent(*entry, event.name);
        else
            missing.append(event.id);
    }
    if (!events.isEmpty() && missing.size() == events.size())
        refuse();
    return missing;
}

bool DBusMenu::AboutToShow(int id)
{
    find(id);
    return false;
}

QList<int> DBusMenu::AboutToShowGroup(const QList<int> &ids, QList<int> &idErrors)
{
    for (const int id : ids) {
        if (m_tree.find(id) == nullptr)
            idErrors.append(id);
    }
    if (!ids.isEmpty() && idErrors.size() == ids.size())
        refuse();
    return {};
}

DBusMenuLayout DBusMenu::layoutOf(int id, const MenuTree::Entry &entry, int depth,
                                  const QStringList &propertyNames) const
{
    DBusMenuLayout layout{id, selectProperties(entry.properties, propertyNames), {}};
    if (depth == 0)
        return layout;
    for (const int child : entry.children) {
        const DBusMenuLayout below =
            layoutOf(child, *m_tree.find(child), depth < 0 ? depth : depth - 1, propertyNames);
        layout.children.append(QDBusVariant(QVariant::fromValue(below)));
    }
    return layout;
}

void DBusMenu::handleEvent(const MenuTree::Entry &entry, const QString &eventId)
{
    if (eventId != QLatin1String("clicked") || !entry.action)
        return;
    // Later, and with a copy: the action may replace the menu or end the program, neither of which
    // belongs inside the call of a host that waits for its answer.
    QMetaObject::invokeMethod(this, entry.action, Qt::QueuedConnection);
}

const MenuTree::Entry *DBusMenu::find(int id) const
{
    const MenuTree::Entry *const entry = m_tree.find(id);
    if (entry == nullptr)
        refuse();
    return entry;
}

void DBusMenu::refuse() const
{
    if (calledFromDBus())
        sendErrorReply(QDBusError::InvalidArgs, QStringLiteral("The menu has no such thing"));
}

} // namespace velmora
