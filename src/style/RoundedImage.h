#pragma once

#include <QImage>
#include <QQuickPaintedItem>
#include <QtQml/qqmlregistration.h>

namespace velmora
{

/// An image that fills its place, its overflow cut off, with rounded corners. (The software scene
/// graph clips to rectangles only.)
class RoundedImage : public QQuickPaintedItem
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QImage image READ image WRITE setImage NOTIFY imageChanged FINAL)
    Q_PROPERTY(qreal radius MEMBER m_radius NOTIFY radiusChanged FINAL) ///< points

public:
    explicit RoundedImage(QQuickItem *parent = nullptr);

    [[nodiscard]] QImage image() const { return m_image; }
    void setImage(const QImage &image);

    void paint(QPainter *painter) override;

Q_SIGNALS:
    void imageChanged();
    void radiusChanged();

private:
    QImage m_image;
    qreal m_radius = 0;
};

} // namespace velmora
