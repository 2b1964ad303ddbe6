#pragma once

#include <QImage>
#include <QList>
#include <QString>

namespace velmora
{

/// The tray symbol, a screen outline whose top third is filled, in one grey that reads on light and
/// on dark panels. One square image for each usual size of a panel, smallest first.
[[nodiscard]] QList<QImage> drawTrayIcons();

/// The name under which hosts find the installed symbol, which they recolour to suit their panel;
/// empty if it is not installed.
[[nodiscard]] QString installedTrayIconName();

} // namespace velmora
