#pragma once

#include "config/NotchSettings.h"

#include <QList>
#include <QRect>
#include <QRectF>

#include <array>

/// Where the notch is. All rectangles are global, in points, with the origin at the top left; they
/// touch the top edge of the screen and are centred on it. They may overhang a narrow screen.
/// Settings that no window system can show are drawn as the nearest that it can.
namespace velmora::NotchGeometry
{

inline constexpr double expandedWidth = 800;
inline constexpr double expandedContentHeight = 90; ///< of the panel, below the top padding
inline constexpr double panelCornerRadius = 12;
inline constexpr double menuCornerRadius = 9;
inline constexpr double panelPadding = 14; ///< left and right of the five zones
inline constexpr double dividerWidth = 1;
inline constexpr double dropRowPadding = 10; ///< left and right of the drop actions
inline constexpr double dropSpacing = 6;     ///< between two of them

/// Of the collapsed notch.
[[nodiscard]] double cornerRadius(const NotchSettings &settings);

[[nodiscard]] QRectF collapsed(const QRectF &screen, const NotchSettings &settings);
[[nodiscard]] QRectF expanded(const QRectF &screen, const NotchSettings &settings);

/// The window that all states of the notch fit into, its menu included.
[[nodiscard]] QRect window(const QRectF &screen, const NotchSettings &settings);

/// Widths of the five zones in a panel of `panelWidth` points, from their relative weights. A
/// weight below 0.3 counts as 0.3, so that no zone vanishes.
[[nodiscard]] QList<double> zoneWidths(const std::array<double, 5> &weights, double panelWidth);

/// Width of each of `count` drop actions in the panel.
[[nodiscard]] double dropSlotWidth(int count);

/// The place of the drop action at `x` points from the left edge of the panel; −1 if there is none.
/// The margin at the left counts for the first one, and each gap for the one on its left.
[[nodiscard]] int dropSlotAt(double x, int count);

} // namespace velmora::NotchGeometry
