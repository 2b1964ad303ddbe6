#pragma once

#include "style/ShapeItem.h"

#include <QColor>
#include <QPainterPath>
#include <QtQml/qqmlregistration.h>

namespace velmora
{

/// A named symbol in one colour, sized like text of the same size. It takes up a square a fifth
/// larger than the text size, as symbols stand beside letters.
class Symbol : public velmora::ShapeItem
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString name MEMBER m_name NOTIFY nameChanged REQUIRED FINAL)
    Q_PROPERTY(qreal size MEMBER m_size NOTIFY changed REQUIRED FINAL) ///< points
    Q_PROPERTY(QColor color MEMBER m_color NOTIFY changed FINAL)

public:
    explicit Symbol(QQuickItem *parent = nullptr);

    void paint(QPainter *painter) override;

Q_SIGNALS:
    void nameChanged();

private:
    QString m_name;
    QPainterPath m_path;
    qreal m_size = 0;
    QColor m_color = Qt::white;
};

} // namespace velmora
