#pragma once

#include "config/NotchWidgetType.h"

#include <array>

namespace velmora
{

/// What an overlay is built from: one snapshot of the settings. Sizes in points; the zones from
/// left to right; zone widths are relative weights. Nothing here is limited: whoever draws has to
/// cope.
struct NotchSettings {
    double notchWidth = 200.0;
    double notchHeight = 36.0;
    double cornerRadius = 10.0;
    double expandedTopPadding = 20.0;
    ZoneWidgets widgets{NotchWidgetType::none, NotchWidgetType::media, NotchWidgetType::none,
                        NotchWidgetType::none, NotchWidgetType::clock};
    std::array<double, 5> zoneWidths{1.0, 1.0, 1.0, 1.0, 1.0};

    bool operator==(const NotchSettings &) const = default;
};

} // namespace velmora
