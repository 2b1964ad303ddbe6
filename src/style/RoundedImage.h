#pragma once

#include "style/ShapeItem.h"

#include <QImage>
#include <QtQml/qqmlregistration.h>

namespace velmora
{

/// An image that fills its place, its overflow cut off, with rounded corners. (The software scene
/// graph clips to rectangles only.)
class RoundedImage : public velmora::ShapeItem
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QImage image MEMBER m_image NOTIFY changed FINAL)
    Q_PROPERTY(qreal radius MEMBER m_radius NOTIFY changed FINAL) ///< points

public:
    void paint(QPainter *painter) override;

private:
    QImage m_image;
    qreal m_radius = 0;
};

} // namespace velmora
