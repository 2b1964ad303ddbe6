#include "overlay/NotchGeometry.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace velmora
{

namespace
{

constexpr double widestPanel = 800;
constexpr double contentHeight = 90; // of the panel, below the top padding
constexpr double menuRoom = 216;     // points of height that the status menu needs
constexpr double buttonWidth = 32;   // of the strip, as far as it has room
constexpr double smallestWeight = 0.3;
constexpr double largestWeight = 4096;

double limited(double value, double fallback, double most)
{
    return std::isnan(value) ? fallback : std::clamp(value, 0.0, most);
}

/// On whole points.
QRectF topCentre(double windowWidth, double width, double height)
{
    return {std::round((windowWidth - width) / 2), 0, width, height};
}

QList<double> shares(const std::array<double, 5> &weights, double available)
{
    QList<double> widths;
    for (const double weight : weights) {
        widths << std::max(limited(weight, 1, largestWeight), smallestWeight);
    }
    const double total = std::accumulate(widths.begin(), widths.end(), 0.0);
    for (double &width : widths) {
        width *= std::max(available, 0.0) / total;
    }
    return widths;
}

} // namespace

NotchGeometry::NotchGeometry(const QRectF &screen, const NotchSettings &settings)
{
    const NotchSettings fallback;
    // Even, so that a compositor which centres the window puts it where we believe it is.
    const double widest = 2 * std::floor(screen.width() / 2);
    const double tallest = screen.height();

    const double width = limited(settings.notchWidth, fallback.notchWidth, widest);
    const double height = limited(settings.notchHeight, fallback.notchHeight, tallest);
    topPadding = limited(settings.expandedTopPadding, fallback.expandedTopPadding,
                         std::max(tallest - contentHeight, 0.0));
    const QSizeF panelSize(std::min(widestPanel, widest),
                           std::min(topPadding + contentHeight, tallest));
    cornerRadius =
        limited(settings.cornerRadius, fallback.cornerRadius, std::min(width / 2, height));

    const int windowWidth = 2 * static_cast<int>(std::ceil(std::max(width, panelSize.width()) / 2));
    const double windowHeight = std::min(std::max({height, panelSize.height(), menuRoom}), tallest);
    window = QRect(qRound(screen.center().x() - windowWidth / 2.0), qRound(screen.top()),
                   windowWidth, static_cast<int>(std::ceil(windowHeight)));
    collapsed = topCentre(windowWidth, width, height);
    panel = topCentre(windowWidth, panelSize.width(), panelSize.height());

    const double button = std::min(buttonWidth, width / 4);
    stripButton = QRectF(collapsed.right() - button, 0, button, height);
    zoneWidths = shares(settings.zoneWidths, panel.width() - 4 * dividerWidth - 2 * panelPadding);
}

double NotchGeometry::dropSlotWidth(int count) const
{
    return (panel.width() - 2 * dropRowPadding - (count - 1) * dropSpacing) / std::max(count, 1);
}

int NotchGeometry::dropSlotAt(double x, int count) const
{
    const double slot = std::trunc((x - dropRowPadding) / (dropSlotWidth(count) + dropSpacing));
    return slot >= 0 && slot < count ? static_cast<int>(slot) : -1;
}

} // namespace velmora
