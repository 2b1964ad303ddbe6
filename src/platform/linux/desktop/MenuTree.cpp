#include "platform/linux/desktop/MenuTree.h"

#include "platform/linux/desktop/DBusMenuTypes.h"

#include <utility>

namespace velmora
{

namespace
{

// Viewers take an underscore for the mark of a mnemonic; two stand for one that is shown.
QString labelFor(QString title)
{
    return title.replace(u'_', QLatin1String("__"));
}

// Keys are told by their X keysym names; letters are their own names.
QString keyName(const QString &keyEquivalent)
{
    return keyEquivalent == u"," ? QStringLiteral("comma") : keyEquivalent;
}

QVariantMap propertiesOf(const MenuItem &item)
{
    if (item.kind == MenuItem::Kind::Separator) {
        return {{QStringLiteral("type"), QStringLiteral("separator")},
                {QStringLiteral("enabled"), true},
                {QStringLiteral("visible"), true}};
    }
    QVariantMap properties{{QStringLiteral("label"), labelFor(item.title)},
                           {QStringLiteral("enabled"), true},
                           {QStringLiteral("visible"), true},
                           {QStringLiteral("x-velmora-tag"), item.tag}};
    if (item.mark != MenuItem::Mark::None) {
        properties.insert(QStringLiteral("toggle-type"),
                          item.isChoice ? QStringLiteral("radio") : QStringLiteral("checkmark"));
        properties.insert(QStringLiteral("toggle-state"), item.mark == MenuItem::Mark::On ? 1 : 0);
    }
    if (!item.keyEquivalent.isEmpty()) {
        const DBusMenuShortcut shortcut{{QStringLiteral("Control"), keyName(item.keyEquivalent)}};
        properties.insert(QStringLiteral("shortcut"), QVariant::fromValue(shortcut));
    }
    if (item.kind == MenuItem::Kind::Submenu)
        properties.insert(QStringLiteral("children-display"), QStringLiteral("submenu"));
    return properties;
}

} // namespace

MenuTree::MenuTree()
{
    replace({});
}

void MenuTree::replace(const Menu &menu)
{
    m_entries.clear();
    Entry root{{{QStringLiteral("children-display"), QStringLiteral("submenu")}}, add(menu), {}};
    m_entries.emplace(rootId, std::move(root));
}

const MenuTree::Entry *MenuTree::find(int id) const
{
    const auto found = m_entries.find(id);
    return found == m_entries.end() ? nullptr : &found->second;
}

std::vector<int> MenuTree::add(const Menu &menu)
{
    std::vector<int> ids;
    ids.reserve(menu.size());
    for (const MenuItem &item : menu)
        ids.push_back(add(item));
    return ids;
}

int MenuTree::add(const MenuItem &item)
{
    const int id = ++m_lastId;
    Entry entry{propertiesOf(item), {}, {}};
    if (item.kind == MenuItem::Kind::Action)
        entry.action = item.action;
    else if (item.kind == MenuItem::Kind::Submenu)
        entry.children = add(item.submenu);
    m_entries.emplace(id, std::move(entry));
    return id;
}

QVariantMap selectProperties(const QVariantMap &properties, const QStringList &names)
{
    if (names.isEmpty())
        return properties;
    QVariantMap selected;
    for (const QString &name : names) {
        if (const auto found = properties.find(name); found != properties.end())
            selected.insert(name, *found);
    }
    return selected;
}

} // namespace velmora
