#include "overlay/OpenWithEntries.h"

namespace velmora
{

void OpenWithEntries::setMenu(OpenWithMenu *menu)
{
    m_menu = menu;
    m_entries.clear();
    const QStringList titles = menu->titles();
    const QStringList icons = menu->iconNames();
    for (qsizetype i = 0; i < titles.size(); ++i) {
        StatusMenuEntry entry;
        entry.title = titles.at(i);
        entry.iconName = icons.value(i);
        m_entries << entry;
    }
    Q_EMIT entriesChanged();
}

void OpenWithEntries::choose(int index)
{
    QMetaObject::invokeMethod(
        m_menu, [menu = m_menu, index] { menu->openWithApp(index); }, Qt::QueuedConnection);
}

void OpenWithEntries::dismiss()
{
    QMetaObject::invokeMethod(m_menu, &OpenWithMenu::dismiss, Qt::QueuedConnection);
}

} // namespace velmora
