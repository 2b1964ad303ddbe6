#pragma once

#include <QColor>
#include <QPainterPath>
#include <QQuickPaintedItem>
#include <QtQml/qqmlregistration.h>

namespace velmora
{

/// A named symbol in one colour, sized like text of the same size. It takes up a square a fifth
/// larger than the text size, as symbols stand beside letters.
class Symbol : public QQuickPaintedItem
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString name READ name WRITE setName NOTIFY nameChanged REQUIRED FINAL)
    Q_PROPERTY(qreal size READ size WRITE setSize NOTIFY sizeChanged REQUIRED FINAL) ///< points
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged FINAL)

public:
    explicit Symbol(QQuickItem *parent = nullptr);

    [[nodiscard]] QString name() const { return m_name; }
    void setName(const QString &name);
    [[nodiscard]] qreal size() const { return m_size; }
    void setSize(qreal points);
    [[nodiscard]] QColor color() const { return m_color; }
    void setColor(const QColor &color);

    void paint(QPainter *painter) override;

Q_SIGNALS:
    void nameChanged();
    void sizeChanged();
    void colorChanged();

private:
    QString m_name;
    QPainterPath m_path;
    qreal m_size = 0;
    QColor m_color = Qt::white;
};

} // namespace velmora
