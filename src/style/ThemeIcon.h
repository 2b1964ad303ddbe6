#pragma once

#include <QQuickPaintedItem>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace velmora
{

/// The icon of a program: by its name in the icon theme, or by the absolute path of a picture.
/// Nothing is drawn for what is not there.
class ThemeIcon : public QQuickPaintedItem
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString name READ name WRITE setName NOTIFY nameChanged FINAL)

public:
    explicit ThemeIcon(QQuickItem *parent = nullptr);

    [[nodiscard]] QString name() const { return m_name; }
    void setName(const QString &name);

    void paint(QPainter *painter) override;

Q_SIGNALS:
    void nameChanged();

private:
    QString m_name;
};

} // namespace velmora
