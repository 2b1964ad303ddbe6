#pragma once

#include <QColor>

/// The colours that recur beside white. All that knows Qt Gui may use them.
namespace velmora::accent
{

inline const QColor green = QColor::fromRgbF(0.3F, 0.9F, 0.5F);
inline const QColor blue = QColor::fromRgbF(0.3F, 0.7F, 1.0F);
inline const QColor red = QColor::fromRgbF(1.0F, 0.38F, 0.28F); ///< a warm one

} // namespace velmora::accent
