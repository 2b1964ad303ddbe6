#pragma once

#include "style/ShapeItem.h"

#include <QString>
#include <QtQml/qqmlregistration.h>

namespace velmora
{

/// The icon of a program: by its name in the icon theme, or by the absolute path of a picture.
/// Nothing is drawn for what is not there.
class ThemeIcon : public velmora::ShapeItem
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString name MEMBER m_name NOTIFY changed FINAL)

public:
    void paint(QPainter *painter) override;

private:
    QString m_name;
};

} // namespace velmora
