#include "platform/linux/desktop/TrayIcon.h"

#include <QPainter>
#include <QPainterPath>
#include <QStandardPaths>

#include <algorithm>
#include <cmath>

namespace velmora
{

namespace
{

constexpr QColor symbolColor(0x90, 0x90, 0x94);

// All edges lie on whole pixels: at 16 pixels a half-covered line would be a blur.
QImage drawSymbol(int size)
{
    const auto share = [size](double part) { return std::lround(size * part); };
    const int line = std::max<int>(1, share(1.0 / 16));
    const int gap = std::max<int>(1, share(1.0 / 20));
    const int left = share(1.0 / 16);
    const int top = share(2.0 / 16);
    const QRect outline(left, top, size - 2 * left, size - 2 * top);
    const QRect hollow = outline.adjusted(line, line, -line, -line);
    QRect band = hollow.adjusted(gap, gap, -gap, -gap);
    band.setHeight(std::max<int>(2, std::lround(outline.height() / 3.0) - line));

    const double radius = size * 2.5 / 16;
    QPainterPath path; // odd-even filling: the hollow is cut out of the outline
    path.addRoundedRect(outline, radius, radius);
    path.addRoundedRect(hollow, radius - line, radius - line);
    const double bandRadius = std::max(0.5, radius - line - gap);
    path.addRoundedRect(band, bandRadius, bandRadius);

    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(path, symbolColor);
    return image;
}

} // namespace

QList<QImage> drawTrayIcons()
{
    QList<QImage> images;
    for (const int size : {16, 22, 24, 32, 44, 48})
        images.append(drawSymbol(size));
    return images;
}

QString installedTrayIconName()
{
    // Asking the file system is enough, since the symbol is installed into the theme that all
    // others fall back to. Loading an icon theme would cost more than the whole tray item.
    const QString file =
        QStandardPaths::locate(QStandardPaths::GenericDataLocation,
                               QStringLiteral("icons/hicolor/symbolic/apps/velmora-symbolic.svg"));
    return file.isEmpty() ? QString() : QStringLiteral("velmora-symbolic");
}

} // namespace velmora
