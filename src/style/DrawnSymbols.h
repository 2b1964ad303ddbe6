#pragma once

#include <QPainterPath>

#include <span>

namespace velmora
{

struct DrawnSymbol {
    const char *name;
    QPainterPath (*path)();
};

/// The symbols without a counterpart in the icon font, each in a box of 24 × 24.
[[nodiscard]] std::span<const DrawnSymbol> drawnSymbols();

} // namespace velmora
