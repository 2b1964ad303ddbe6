#pragma once

#include "services/TodoService.h"

#include <QList>
#include <QObject>
#include <QQmlParserStatus>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace velmora
{

/// What the todo widget shows: its tasks, the trash or the row in which a new one is typed.
class TodoModel : public QObject, public QQmlParserStatus
{
    Q_OBJECT
    QML_ELEMENT
    Q_INTERFACES(QQmlParserStatus)
    Q_PROPERTY(velmora::TodoService *service MEMBER m_service REQUIRED FINAL)
    Q_PROPERTY(Body body READ body NOTIFY changed FINAL)
    Q_PROPERTY(bool showingAdd READ showingAdd NOTIFY changed FINAL)
    Q_PROPERTY(bool showingTrash READ showingTrash NOTIFY changed FINAL)
    Q_PROPERTY(QString newTitle READ newTitle WRITE setNewTitle NOTIFY newTitleChanged FINAL)
    /// Whether the row was opened by the user here: one that comes back with a title does not take
    /// the keyboard by itself.
    Q_PROPERTY(bool isRowOpened READ isRowOpened NOTIFY changed FINAL)
    /// The rows of the body: the first three open tasks, or deleted ones.
    Q_PROPERTY(QList<velmora::TodoItem> rows READ rows NOTIFY changed FINAL)
    /// "+2 more" for the other ones; empty if there are none.
    Q_PROPERTY(QString more READ more NOTIFY changed FINAL)

public:
    enum class Body { EntryRow, Trash, Unauthorized, AllDone, Tasks };
    Q_ENUM(Body)

    using QObject::QObject;

    void classBegin() override {}
    void componentComplete() override;

    [[nodiscard]] Body body() const { return m_body; }
    [[nodiscard]] bool showingAdd() const { return m_showingAdd; }
    [[nodiscard]] bool showingTrash() const { return m_showingTrash; }
    [[nodiscard]] bool isRowOpened() const { return m_isRowOpened; }
    [[nodiscard]] QString newTitle() const { return m_newTitle; }
    void setNewTitle(const QString &title);
    [[nodiscard]] QList<TodoItem> rows() const { return m_rows; }
    [[nodiscard]] QString more() const;

    /// Opens the row, or closes it and drops what was typed.
    Q_INVOKABLE void toggleAdd();
    Q_INVOKABLE void toggleTrash();
    /// Adds what was typed and closes the row, unless it is nothing but blanks.
    Q_INVOKABLE void submit();
    // Of what is shown in a row.
    Q_INVOKABLE void complete(int row) { act(&TodoService::complete, row); }
    Q_INVOKABLE void deleteItem(int row) { act(&TodoService::deleteItem, row); }
    Q_INVOKABLE void restore(int row) { act(&TodoService::restore, row); }

Q_SIGNALS:
    void changed();
    void newTitleChanged();

private:
    void update();
    void act(void (TodoService::*action)(const TodoItem &), int row);

    TodoService *m_service = nullptr;
    bool m_showingAdd = false;
    bool m_showingTrash = false;
    bool m_isRowOpened = false;
    QString m_newTitle;
    Body m_body = Body::Unauthorized;
    QList<TodoItem> m_rows;
    int m_hidden = 0;
};

} // namespace velmora
