#include "overlay/OpenWithEntries.h"

namespace velmora
{

void OpenWithEntries::setMenu(OpenWithMenu *menu)
{
    m_menu = menu;
    connect(menu, &OpenWithMenu::changed, this, &OpenWithEntries::changed);
    Q_EMIT changed();
}

QList<StatusMenuEntry> OpenWithEntries::entries() const
{
    QList<StatusMenuEntry> entries;
    if (!m_menu) {
        return entries;
    }
    const QStringList titles = m_menu->titles();
    const QStringList icons = m_menu->iconNames();
    for (qsizetype i = 0; i < titles.size(); ++i) {
        StatusMenuEntry entry;
        entry.title = titles.at(i);
        entry.iconName = icons.value(i);
        entries << entry;
    }
    return entries;
}

} // namespace velmora
