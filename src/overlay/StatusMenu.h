#pragma once

#include "platform/Clock.h"
#include "platform/StatusItem.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

#include <vector>

namespace velmora
{

/// One line of the status menu as a view shows it. Without its key: the overlay never has the
/// keyboard.
struct StatusMenuEntry {
    Q_GADGET
    QML_VALUE_TYPE(statusMenuEntry)
    Q_PROPERTY(QString title MEMBER title)
    Q_PROPERTY(QString iconName MEMBER iconName) ///< as ThemeIcon has it; empty: none
    Q_PROPERTY(bool isSeparator MEMBER isSeparator)
    Q_PROPERTY(bool isChecked MEMBER isChecked)
    Q_PROPERTY(bool hasSubmenu MEMBER hasSubmenu)
    Q_PROPERTY(int tag MEMBER tag)

public:
    QString title;
    QString iconName;
    bool isSeparator = false;
    bool isChecked = false;
    bool hasSubmenu = false;
    int tag = 0;
};

/// The status menu for a view inside the overlay, where no tray host is needed to reach it.
class StatusMenu : public QObject, public StatusItem
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Handed down to the views")
    Q_PROPERTY(QList<velmora::StatusMenuEntry> entries READ entries NOTIFY entriesChanged FINAL)
    /// The line whose submenu is open, −1 for none; one menu at a time is open on all screens.
    Q_PROPERTY(int openIndex READ openIndex WRITE setOpenIndex NOTIFY submenuChanged FINAL)
    Q_PROPERTY(QList<velmora::StatusMenuEntry> submenu READ submenu NOTIFY submenuChanged FINAL)

public:
    explicit StatusMenu(Clock &clock)
        : m_clock(clock)
    {
    }

    void setMenu(const Menu &menu) override;

    [[nodiscard]] QList<StatusMenuEntry> entries() const;
    [[nodiscard]] int openIndex() const { return m_openIndex; }
    void setOpenIndex(int index);
    [[nodiscard]] QList<StatusMenuEntry> submenu() const;

    /// Runs the action of a line in the next turn of the main loop: it may take down the very view
    /// that the line was pressed in. `submenuIndex` is −1 for the line itself.
    Q_INVOKABLE void trigger(int index, int submenuIndex = -1);

Q_SIGNALS:
    void entriesChanged();
    void submenuChanged();
    /// Wherever it is open, it has to close.
    void dismissed();

private:
    Clock &m_clock;
    Menu m_menu;
    int m_openIndex = -1;
    TimerHandle m_pending;
};

} // namespace velmora
