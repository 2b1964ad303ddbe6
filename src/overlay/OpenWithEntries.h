#pragma once

#include "drop/OpenWithMenu.h"
#include "overlay/StatusMenu.h"

#include <QList>
#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace velmora
{

/// The choice of an application as lines of a menu in the scene. They are those of the moment when
/// it was made: a view of them lasts as long as the menu is open.
class OpenWithEntries : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(velmora::OpenWithMenu *menu READ menu WRITE setMenu REQUIRED FINAL)
    Q_PROPERTY(QList<velmora::StatusMenuEntry> entries READ entries NOTIFY entriesChanged FINAL)

public:
    using QObject::QObject;

    [[nodiscard]] OpenWithMenu *menu() const { return m_menu; }
    void setMenu(OpenWithMenu *menu);
    [[nodiscard]] QList<StatusMenuEntry> entries() const { return m_entries; }

    /// Both take effect in the next turn of the main loop: they take down the view.
    Q_INVOKABLE void choose(int index);
    Q_INVOKABLE void dismiss();

Q_SIGNALS:
    void entriesChanged();

private:
    OpenWithMenu *m_menu = nullptr; ///< lives as long as the program
    QList<StatusMenuEntry> m_entries;
};

} // namespace velmora
