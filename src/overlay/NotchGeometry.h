#pragma once

#include "config/NotchSettings.h"

#include <QList>
#include <QObject>
#include <QRect>
#include <QRectF>
#include <QtQml/qqmlregistration.h>

namespace velmora
{

/// Where the parts of one overlay are, in points, for hit tests and views alike. Settings that its
/// screen has no room for are drawn as the nearest that it has, and those that are no number as
/// their defaults. All rectangles but the window's are relative to the window.
struct NotchGeometry {
    Q_GADGET
    QML_VALUE_TYPE(notchGeometry)
    Q_PROPERTY(QRectF collapsed MEMBER collapsed)
    Q_PROPERTY(QRectF panel MEMBER panel)
    Q_PROPERTY(QRectF stripButton MEMBER stripButton)
    Q_PROPERTY(double cornerRadius MEMBER cornerRadius)
    Q_PROPERTY(double panelCornerRadius MEMBER panelCornerRadius)
    Q_PROPERTY(double menuCornerRadius MEMBER menuCornerRadius)
    Q_PROPERTY(double topPadding MEMBER topPadding)
    Q_PROPERTY(double panelPadding MEMBER panelPadding)
    Q_PROPERTY(double dividerWidth MEMBER dividerWidth)
    Q_PROPERTY(QList<double> zoneWidths MEMBER zoneWidths)
    Q_PROPERTY(double dropRowPadding MEMBER dropRowPadding)
    Q_PROPERTY(double dropSpacing MEMBER dropSpacing)

public:
    NotchGeometry() = default;
    NotchGeometry(const QRectF &screen, const NotchSettings &settings);

    /// Global: at the top centre of the screen, with room for every state of the notch.
    QRect window;
    QRectF collapsed;
    QRectF panel;       ///< the expanded notch
    QRectF stripButton; ///< all that counts as the button at the right end of the strip

    double cornerRadius = 0; ///< of the collapsed notch
    double panelCornerRadius = 12;
    double menuCornerRadius = 9;

    double topPadding = 0;    ///< above the zones
    double panelPadding = 14; ///< left and right of them
    double dividerWidth = 1;
    QList<double> zoneWidths; ///< of the five zones; a weight below 0.3 counts as 0.3

    double dropRowPadding = 10; ///< left and right of the drop actions
    double dropSpacing = 6;     ///< between two of them

    /// Width of each of `count` drop actions in the panel.
    Q_INVOKABLE [[nodiscard]] double dropSlotWidth(int count) const;

    /// The place of the drop action at `x` points from the left edge of the panel; −1 if there is
    /// none. The margin at the left counts for the first one, each gap for the one on its left.
    [[nodiscard]] int dropSlotAt(double x, int count) const;
};

} // namespace velmora
