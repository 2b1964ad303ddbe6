#include "overlay/NotchGeometry.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace velmora::NotchGeometry
{

namespace
{

constexpr double largestSide = 4096; // points: what can still be painted as one picture
constexpr double menuRoom = 216;     // points of height that the status menu needs
constexpr double smallestWeight = 0.3;

/// Size and place of a rectangle at the top centre of the screen, on whole points.
QRectF topCentre(const QRectF &screen, double width, double height)
{
    const double w = std::clamp(width, 0.0, largestSide);
    const double h = std::clamp(height, 0.0, largestSide);
    return {std::round(screen.center().x() - w / 2), screen.top(), w, h};
}

} // namespace

double cornerRadius(const NotchSettings &settings)
{
    return std::clamp(settings.cornerRadius, 0.0, largestSide);
}

QRectF collapsed(const QRectF &screen, const NotchSettings &settings)
{
    return topCentre(screen, settings.notchWidth, settings.notchHeight);
}

QRectF expanded(const QRectF &screen, const NotchSettings &settings)
{
    return topCentre(screen, expandedWidth, settings.expandedTopPadding + expandedContentHeight);
}

QRect window(const QRectF &screen, const NotchSettings &settings)
{
    const QRectF both = collapsed(screen, settings).united(expanded(screen, settings));
    // An even width, so that a compositor which centres the window puts it where we believe it is.
    const double width = 2 * std::ceil(both.width() / 2);
    return topCentre(screen, width, std::max(both.height(), menuRoom)).toAlignedRect();
}

QList<double> zoneWidths(const std::array<double, 5> &weights, double panelWidth)
{
    const double available = panelWidth - 4 * dividerWidth - 2 * panelPadding;
    std::array<double, 5> counted{};
    std::transform(weights.begin(), weights.end(), counted.begin(),
                   [](double weight) { return std::clamp(weight, smallestWeight, largestSide); });
    const double total = std::accumulate(counted.begin(), counted.end(), 0.0);
    QList<double> widths;
    for (const double weight : counted) {
        widths << available * (weight / total);
    }
    return widths;
}

double dropSlotWidth(int count)
{
    return (expandedWidth - 2 * dropRowPadding - (count - 1) * dropSpacing) / count;
}

int dropSlotAt(double x, int count)
{
    if (count <= 0) {
        return -1;
    }
    const double slot = std::trunc((x - dropRowPadding) / (dropSlotWidth(count) + dropSpacing));
    return slot >= 0 && slot < count ? static_cast<int>(slot) : -1;
}

} // namespace velmora::NotchGeometry
