#pragma once

#include "drop/DropActionID.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace velmora
{

/// How an action is shown, for views that have its raw value.
class DropActionInfo : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString action READ action WRITE setAction NOTIFY changed REQUIRED FINAL)
    Q_PROPERTY(QString label READ label NOTIFY changed FINAL)
    Q_PROPERTY(QString symbol READ symbol NOTIFY changed FINAL)
    Q_PROPERTY(QColor color READ color NOTIFY changed FINAL)

public:
    using QObject::QObject;

    [[nodiscard]] QString action() const { return m_action ? rawValue(*m_action) : QString(); }
    void setAction(const QString &rawValue)
    {
        m_action = dropActionFromRawValue(rawValue);
        Q_EMIT changed();
    }
    [[nodiscard]] QString label() const { return m_action ? velmora::label(*m_action) : QString(); }
    [[nodiscard]] QString symbol() const
    {
        return m_action ? velmora::symbol(*m_action) : QString();
    }
    [[nodiscard]] QColor color() const { return m_action ? velmora::color(*m_action) : QColor(); }

Q_SIGNALS:
    void changed();

private:
    std::optional<DropActionID> m_action;
};

} // namespace velmora
