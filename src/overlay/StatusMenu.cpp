#include "overlay/StatusMenu.h"

#include <algorithm>
#include <iterator>

namespace velmora
{

namespace
{

StatusMenuEntry entryFor(const MenuItem &item)
{
    StatusMenuEntry entry;
    entry.title = item.title;
    entry.keyEquivalent = item.keyEquivalent;
    entry.isSeparator = item.kind == MenuItem::Kind::Separator;
    entry.isChecked = item.mark == MenuItem::Mark::On;
    entry.hasSubmenu = item.kind == MenuItem::Kind::Submenu;
    entry.tag = item.tag;
    return entry;
}

QList<StatusMenuEntry> entriesFor(const Menu &menu)
{
    QList<StatusMenuEntry> entries;
    std::transform(menu.begin(), menu.end(), std::back_inserter(entries), entryFor);
    return entries;
}

const MenuItem *itemAt(const Menu &menu, int index)
{
    const auto position = static_cast<std::size_t>(index);
    return index >= 0 && position < menu.size() ? &menu[position] : nullptr;
}

} // namespace

void StatusMenu::setMenu(const Menu &menu)
{
    m_menu = menu;
    Q_EMIT entriesChanged();
}

QList<StatusMenuEntry> StatusMenu::entries() const { return entriesFor(m_menu); }

QList<StatusMenuEntry> StatusMenu::submenu(int index) const
{
    const MenuItem *item = itemAt(m_menu, index);
    return item != nullptr ? entriesFor(item->submenu) : QList<StatusMenuEntry>();
}

void StatusMenu::trigger(int index, int submenuIndex)
{
    const MenuItem *item = itemAt(m_menu, index);
    if (item != nullptr && submenuIndex >= 0) {
        item = itemAt(item->submenu, submenuIndex);
    }
    if (item != nullptr && item->action) {
        m_pending = m_clock.after(std::chrono::milliseconds(0), item->action);
    }
}

} // namespace velmora
