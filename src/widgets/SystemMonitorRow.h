#pragma once

#include "services/SystemMonitorService.h"

#include <QColor>
#include <QObject>
#include <QQmlParserStatus>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace velmora
{

/// One gauge of the system monitor widget, derived from the service's figures.
class SystemMonitorRow : public QObject, public QQmlParserStatus
{
    Q_OBJECT
    QML_ELEMENT
    Q_INTERFACES(QQmlParserStatus)
    Q_PROPERTY(velmora::SystemMonitorService *monitor MEMBER m_monitor REQUIRED FINAL)
    Q_PROPERTY(Kind kind MEMBER m_kind REQUIRED FINAL)
    Q_PROPERTY(QString label READ label NOTIFY changed FINAL)
    Q_PROPERTY(qreal fraction READ fraction NOTIFY changed FINAL) ///< may go beyond 0 to 1
    Q_PROPERTY(QString text READ text NOTIFY changed FINAL)
    /// Green, orange above 65 %, red above 85 %.
    Q_PROPERTY(QColor color READ color NOTIFY changed FINAL)

public:
    enum class Kind { Processor, Memory, Disk };
    Q_ENUM(Kind)

    using QObject::QObject;

    void classBegin() override {}
    void componentComplete() override;

    [[nodiscard]] QString label() const { return m_label; }
    [[nodiscard]] double fraction() const { return m_fraction; }
    [[nodiscard]] QString text() const { return m_text; }
    [[nodiscard]] QColor color() const;

Q_SIGNALS:
    void changed();

private:
    void takeFigures();

    SystemMonitorService *m_monitor = nullptr;
    Kind m_kind = Kind::Processor;
    QString m_label;
    double m_fraction = 0;
    QString m_text;
};

} // namespace velmora
