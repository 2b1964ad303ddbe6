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
    for (const MenuItem &item : menu) {
        const int id = ids.emplace_back(++m_lastId);
        m_entries.emplace(id, Entry{propertiesOf(item), add(item.submenu), item.action});
    }
    return ids;
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
