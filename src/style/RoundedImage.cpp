#include "style/RoundedImage.h"

#include <QPainter>
#include <QPainterPath>

namespace velmora
{

void RoundedImage::paint(QPainter *painter)
{
    if (m_image.isNull()) {
        return;
    }
    // Scaled down once and well; a brush would leave out pixels.
    const double ratio = painter->device()->devicePixelRatioF();
    const QSize pixels = (size() * ratio).toSize();
    QImage scaled =
        m_image.scaled(pixels, Qt::KeepAspectRatioByExpanding, Qt::SmoothTransformation);
    scaled.setDevicePixelRatio(ratio);
    const QPointF overflow((scaled.width() / ratio - width()) / 2,
                           (scaled.height() / ratio - height()) / 2);
    QPainterPath outline;
    outline.addRoundedRect(boundingRect(), m_radius, m_radius);
    painter->setRenderHint(QPainter::Antialiasing);
    QBrush brush(scaled);
    brush.setTransform(QTransform::fromTranslate(-overflow.x(), -overflow.y()));
    painter->fillPath(outline, brush);
}

} // namespace velmora
