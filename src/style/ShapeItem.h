#pragma once

#include <QQuickPaintedItem>
#include <QtQml/qqmlregistration.h>

namespace velmora
{

/// What the smaller painted items have in common: smooth edges, and a repaint at every change.
/// (Derive by its full name: the registration of types finds no other.)
class ShapeItem : public QQuickPaintedItem
{
    Q_OBJECT
    QML_ANONYMOUS

public:
    explicit ShapeItem(QQuickItem *parent = nullptr)
        : QQuickPaintedItem(parent)
    {
        setAntialiasing(true);
        connect(this, &ShapeItem::changed, this, [this] { update(); });
    }

Q_SIGNALS:
    void changed();
};

} // namespace velmora
