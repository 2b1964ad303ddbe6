#include "drop/OpenWithMenu.h"

#include <utility>

namespace velmora
{

namespace
{
constexpr qsizetype mostItems = 10;
}

OpenWithMenu::OpenWithMenu(Applications &applications, QObject *parent)
    : QObject(parent)
    , m_applications(applications)
{
}

QStringList OpenWithMenu::titles() const
{
    QStringList titles;
    for (const Application &application : m_items) {
        titles << application.name;
    }
    return titles;
}

QStringList OpenWithMenu::iconNames() const
{
    QStringList names;
    for (const Application &application : m_items) {
        names << application.iconName;
    }
    return names;
}

void OpenWithMenu::popUp(const QList<Application> &applications, const QList<QUrl> &files,
                         Closed closed)
{
    dismiss();
    m_items = applications.mid(0, mostItems);
    m_files = files;
    m_closed = std::move(closed);
    m_isShown = false;
    Q_EMIT changed();
    if (!m_isShown) {
        dismiss();
    }
}

void OpenWithMenu::openWithApp(int index)
{
    if (index >= 0 && index < m_items.size()) {
        m_applications.open(m_files, m_items.at(index));
    }
    dismiss();
}

void OpenWithMenu::dismiss()
{
    const Closed closed = std::exchange(m_closed, {});
    if (!closed) {
        return;
    }
    m_items.clear();
    m_files.clear();
    Q_EMIT changed();
    closed();
}

} // namespace velmora
