#pragma once

#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace velmora
{

/// Whether one overlay is expanded. One instance a controller, observed by its views.
class NotchState : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Belongs to a controller")
    Q_PROPERTY(bool isExpanded READ isExpanded NOTIFY isExpandedChanged FINAL)

public:
    using QObject::QObject;

    [[nodiscard]] bool isExpanded() const { return m_isExpanded; }
    void setExpanded(bool expanded)
    {
        if (expanded != m_isExpanded) {
            m_isExpanded = expanded;
            Q_EMIT isExpandedChanged();
        }
    }

Q_SIGNALS:
    void isExpandedChanged();

private:
    bool m_isExpanded = false;
};

} // namespace velmora
