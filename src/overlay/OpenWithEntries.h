#pragma once

#include "drop/OpenWithMenu.h"
#include "overlay/StatusMenu.h"

#include <QList>
#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace velmora
{

/// The choice of an application as lines of a menu in the scene.
class OpenWithEntries : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(velmora::OpenWithMenu *menu READ menu WRITE setMenu NOTIFY changed REQUIRED FINAL)
    Q_PROPERTY(QList<velmora::StatusMenuEntry> entries READ entries NOTIFY changed FINAL)

public:
    using QObject::QObject;

    [[nodiscard]] OpenWithMenu *menu() const { return m_menu; }
    void setMenu(OpenWithMenu *menu);
    [[nodiscard]] QList<StatusMenuEntry> entries() const;

Q_SIGNALS:
    void changed();

private:
    OpenWithMenu *m_menu = nullptr; ///< lives as long as the program
};

} // namespace velmora
