#pragma once

#include "platform/Pointer.h"

namespace velmora
{

/// A Wayland client hears of the pointer only while it is over one of its own surfaces.
class WaylandPointer final : public Pointer
{
public:
    [[nodiscard]] std::optional<QPointF> location() const override { return std::nullopt; }
};

} // namespace velmora
