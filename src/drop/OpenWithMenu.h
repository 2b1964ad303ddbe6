#pragma once

#include "platform/Applications.h"

#include <QObject>
#include <QStringList>
#include <QtQml/qqmlregistration.h>

#include <functional>

namespace velmora
{

/// The choice of an application for dropped files, as long as it is open: whoever can draw a menu
/// at the pointer shows the titles and tells which was taken, or that none was.
class OpenWithMenu : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Belongs to the drop actions")
    Q_PROPERTY(bool isOpen READ isOpen NOTIFY changed FINAL)
    Q_PROPERTY(QStringList titles READ titles NOTIFY changed FINAL)
    /// One for each title: a name of the icon theme, an absolute path, or nothing.
    Q_PROPERTY(QStringList iconNames READ iconNames NOTIFY changed FINAL)

public:
    /// Called once, when the menu has closed, whether or not something was chosen.
    using Closed = std::function<void()>;

    explicit OpenWithMenu(Applications &applications, QObject *parent = nullptr);

    [[nodiscard]] bool isOpen() const { return static_cast<bool>(m_closed); }
    [[nodiscard]] QStringList titles() const;
    [[nodiscard]] QStringList iconNames() const;

    /// Opens it with the first ten of the applications. One that is open already is dismissed, and
    /// so is one that nobody shows.
    void popUp(const QList<Application> &applications, const QList<QUrl> &files, Closed closed);

    /// To be called by whoever shows it, within `changed`.
    void setShown() { m_isShown = true; }

    /// Takes an item, by its place, and closes the menu; an item that is not there only closes it.
    Q_INVOKABLE void openWithApp(int index);
    Q_INVOKABLE void dismiss();

Q_SIGNALS:
    void changed();

private:
    Applications &m_applications;
    QList<Application> m_items;
    QList<QUrl> m_files;
    Closed m_closed;
    bool m_isShown = false;
};

} // namespace velmora
