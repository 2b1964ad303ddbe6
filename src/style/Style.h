#pragma once

#include "style/Accents.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace velmora
{

/// What recurs in the views: accents, degrees of white on black by what they are for, and sizes of
/// text in points.
class Style : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(QColor green MEMBER green CONSTANT FINAL)
    Q_PROPERTY(QColor blue MEMBER blue CONSTANT FINAL)
    Q_PROPERTY(QColor red MEMBER red CONSTANT FINAL)

    Q_PROPERTY(QColor strong MEMBER strong CONSTANT FINAL)
    Q_PROPERTY(QColor control MEMBER control CONSTANT FINAL)
    Q_PROPERTY(QColor fill MEMBER fill CONSTANT FINAL)
    Q_PROPERTY(QColor detail MEMBER detail CONSTANT FINAL)
    Q_PROPERTY(QColor label MEMBER label CONSTANT FINAL)
    Q_PROPERTY(QColor hint MEMBER hint CONSTANT FINAL)
    Q_PROPERTY(QColor placeholder MEMBER placeholder CONSTANT FINAL)
    Q_PROPERTY(QColor dim MEMBER dim CONSTANT FINAL)
    Q_PROPERTY(QColor track MEMBER track CONSTANT FINAL)

    Q_PROPERTY(qreal tinyText MEMBER tinyText CONSTANT FINAL)
    Q_PROPERTY(qreal smallText MEMBER smallText CONSTANT FINAL)
    Q_PROPERTY(qreal text MEMBER text CONSTANT FINAL)
    Q_PROPERTY(qreal largeText MEMBER largeText CONSTANT FINAL)

public:
    using QObject::QObject;

    static QColor white(float opacity) { return QColor::fromRgbF(1, 1, 1, opacity); }

    static inline const QColor green = accent::green;
    static inline const QColor blue = accent::blue;
    static inline const QColor red = accent::red;

    static inline const QColor strong = white(0.85F);
    static inline const QColor control = white(0.75F); ///< what can be pressed
    static inline const QColor fill = white(0.7F);     ///< of a bar
    static inline const QColor detail = white(0.5F);   ///< the second line of a text
    static inline const QColor label = white(0.4F);
    static inline const QColor hint = white(0.35F);
    static inline const QColor placeholder = white(0.3F);
    static inline const QColor dim = white(0.2F);    ///< the dots that do not count
    static inline const QColor track = white(0.12F); ///< of a bar

    static constexpr qreal tinyText = 7.5;
    static constexpr qreal smallText = 8;
    static constexpr qreal text = 9;
    static constexpr qreal largeText = 10;
};

} // namespace velmora
