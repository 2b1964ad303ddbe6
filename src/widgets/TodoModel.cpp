#include "widgets/TodoModel.h"

#include <QGuiApplication>
#include <QInputMethod>

namespace velmora
{

namespace
{

constexpr qsizetype shownRows = 3;

} // namespace

void TodoModel::componentComplete()
{
    m_newTitle = m_service->draft();
    m_showingAdd = !m_newTitle.isEmpty();
    connect(m_service, &TodoService::itemsChanged, this, &TodoModel::update);
    connect(m_service, &TodoService::trashChanged, this, &TodoModel::update);
    connect(m_service, &TodoService::isAuthorizedChanged, this, &TodoModel::update);
    Q_EMIT newTitleChanged();
    update();
}

void TodoModel::update()
{
    m_rows.clear();
    m_hidden = 0;
    const auto take = [this](const TodoItem &item) {
        if (m_rows.size() < shownRows) {
            m_rows << item;
        } else {
            ++m_hidden;
        }
    };
    if (m_showingTrash) {
        for (const TrashedItem &trashed : m_service->trash()) {
            take(trashed.item);
        }
    } else {
        for (const TodoItem &item : m_service->items()) {
            if (!item.isCompleted) {
                take(item);
            }
        }
    }
    m_body = m_showingAdd                 ? Body::EntryRow
             : m_showingTrash             ? Body::Trash
             : !m_service->isAuthorized() ? Body::Unauthorized
             : m_rows.isEmpty()           ? Body::AllDone
                                          : Body::Tasks;
    Q_EMIT changed();
}

QString TodoModel::more() const
{
    return m_hidden > 0 ? tr("+%1 more").arg(m_hidden) : QString();
}

void TodoModel::act(void (TodoService::*action)(const TodoItem &), int row)
{
    if (row >= 0 && row < m_rows.size()) {
        (m_service->*action)(TodoItem(m_rows[row]));
    }
}

void TodoModel::setNewTitle(const QString &title)
{
    if (title != m_newTitle) {
        m_newTitle = title;
        m_service->setDraft(title);
        Q_EMIT newTitleChanged();
    }
}

void TodoModel::toggleAdd()
{
    m_showingAdd = !m_showingAdd;
    m_isRowOpened = m_showingAdd;
    setNewTitle({});
    update();
}

void TodoModel::toggleTrash()
{
    m_showingTrash = !m_showingTrash;
    update();
}

void TodoModel::submit()
{
    QGuiApplication::inputMethod()->commit(); // what is still being composed
    if (!isBlank(m_newTitle)) {
        m_service->add(m_newTitle);
        toggleAdd();
    }
}

} // namespace velmora
