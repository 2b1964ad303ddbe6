#pragma once

#include <QPainterPath>
#include <QString>
#include <QStringList>

namespace velmora
{

/// The outline of a symbol in a box of 24 × 24, origin at the top left; empty for a name that is
/// not known. Most come from the icon font, the rest are drawn here.
[[nodiscard]] QPainterPath symbolPath(const QString &name);

/// All names that have an outline.
[[nodiscard]] QStringList symbolNames();

} // namespace velmora
