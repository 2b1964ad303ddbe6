#pragma once

#include "config/NotchServices.h"

#include <QObject>
#include <QString>
#include <QUrl>
#include <QVariantMap>
#include <QtQml/qqmlregistration.h>

namespace velmora
{

/// The views of the widgets, by the stored names of their types.
class WidgetViews : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    using QObject::QObject;

    /// The view's file; empty for a type that has none.
    Q_INVOKABLE static QUrl source(const QString &type);

    /// The values of the view's required properties.
    Q_INVOKABLE static QVariantMap inputs(const QString &type, velmora::NotchServices *services);
};

} // namespace velmora
