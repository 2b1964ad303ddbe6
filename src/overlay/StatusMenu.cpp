#include "overlay/StatusMenu.h"

namespace velmora
{

namespace
{

QList<StatusMenuEntry> entriesFor(const Menu &menu)
{
    QList<StatusMenuEntry> entries;
    for (const MenuItem &item : menu) {
        StatusMenuEntry entry;
        entry.title = item.title;
        entry.isSeparator = item.kind == MenuItem::Kind::Separator;
        entry.isChecked = item.mark == MenuItem::Mark::On;
        entry.hasSubmenu = item.kind == MenuItem::Kind::Submenu;
        entry.tag = item.tag;
        entries << entry;
    }
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
    Q_EMIT submenuChanged();
}

QList<StatusMenuEntry> StatusMenu::entries() const
{
    return entriesFor(m_menu);
}

void StatusMenu::setOpenIndex(int index)
{
    if (index != m_openIndex) {
        m_openIndex = index;
        Q_EMIT submenuChanged();
    }
}

QList<StatusMenuEntry> StatusMenu::submenu() const
{
    const MenuItem *item = itemAt(m_menu, m_openIndex);
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
