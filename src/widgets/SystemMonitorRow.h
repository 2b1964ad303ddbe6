#pragma once

#include "services/SystemMonitorService.h"

#include <QColor>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace velmora
{

/// One gauge of the system monitor widget, derived from the service's figures.
class SystemMonitorRow : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(velmora::SystemMonitorService *monitor READ monitor WRITE setMonitor NOTIFY
                   monitorChanged REQUIRED FINAL)
    Q_PROPERTY(Kind kind READ kind WRITE setKind NOTIFY kindChanged REQUIRED FINAL)
    Q_PROPERTY(QString label READ label NOTIFY kindChanged FINAL)
    Q_PROPERTY(qreal fraction READ fraction NOTIFY changed FINAL) ///< may go beyond 0 to 1
    Q_PROPERTY(QString text READ text NOTIFY changed FINAL)
    Q_PROPERTY(QColor color READ color NOTIFY changed FINAL)

public:
    enum class Kind { Processor, Memory, Disk };
    Q_ENUM(Kind)

    using QObject::QObject;

    [[nodiscard]] SystemMonitorService *monitor() const { return m_monitor; }
    void setMonitor(SystemMonitorService *monitor);
    [[nodiscard]] Kind kind() const { return m_kind; }
    void setKind(Kind kind);
    [[nodiscard]] QString label() const;
    [[nodiscard]] double fraction() const;
    [[nodiscard]] QString text() const;
    [[nodiscard]] QColor color() const;

Q_SIGNALS:
    void monitorChanged();
    void kindChanged();
    void changed();

private:
    QPointer<SystemMonitorService> m_monitor;
    Kind m_kind = Kind::Processor;
};

/// Green, orange above 65 %, red above 85 %.
[[nodiscard]] QColor loadColor(double fraction);

/// "12G free", below one unit of 2^30 bytes "512M free"; a dash while the size is not known.
[[nodiscard]] QString freeSpaceText(double usedGB, double totalGB);

} // namespace velmora
