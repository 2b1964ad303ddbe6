#include "platform/linux/desktop/DBusMenu.h"

#include <QDBusError>
#include <QGuiApplication>
#include <QMetaObject>
#include <QSet>

namespace velmora
{

DBusMenu::DBusMenu()
{
    registerDBusMenuTypes();
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
    const MenuTree::Entry *entry = m_tree.find(parentId);
    if (entry == nullptr)
        refuseId(parentId);
    else
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
        refuse(QStringLiteral("None of the menu entries exists"));
    return list;
}

QDBusVariant DBusMenu::GetProperty(int id, const QString &name)
{
    // An error reply takes the place of the value, which only has to be one that can be sent.
    QDBusVariant none{QString()};
    const MenuTree::Entry *entry = m_tree.find(id);
    if (entry == nullptr) {
        refuseId(id);
        return none;
    }
    const auto found = entry->properties.find(name);
    if (found == entry->properties.end()) {
        refuse(QStringLiteral("Menu entry %1 has no property of that name").arg(id));
        return none;
    }
    return QDBusVariant(*found);
}

void DBusMenu::Event(int id, const QString &eventId, const QDBusVariant & /*data*/,
                     uint /*timestamp*/)
{
    if (const MenuTree::Entry *entry = m_tree.find(id))
        handleEvent(*entry, eventId);
    else
        refuseId(id);
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
        refuse(QStringLiteral("None of the menu entries exists"));
    return missing;
}

bool DBusMenu::AboutToShow(int id)
{
    if (m_tree.find(id) == nullptr)
        refuseId(id);
    return false;
}

QList<int> DBusMenu::AboutToShowGroup(const QList<int> &ids, QList<int> &idErrors)
{
    for (const int id : ids) {
        if (m_tree.find(id) == nullptr)
            idErrors.append(id);
    }
    if (!ids.isEmpty() && idErrors.size() == ids.size())
        refuse(QStringLiteral("None of the menu entries exists"));
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

void DBusMenu::refuse(const QString &reason) const
{
    if (calledFromDBus())
        sendErrorReply(QDBusError::InvalidArgs, reason);
}

void DBusMenu::refuseId(int id) const
{
    refuse(QStringLiteral("There is no menu entry %1").arg(id));
}

} // namespace velmora
