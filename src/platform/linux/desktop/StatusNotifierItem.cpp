#include "platform/linux/desktop/StatusNotifierItem.h"

#include "platform/linux/desktop/TrayIcon.h"

#include <QDBusMetaType>
#include <QtEndian>

namespace velmora
{

StatusNotifierPixmap toStatusNotifierPixmap(const QImage &image)
{
    const QImage source = image.convertToFormat(QImage::Format_ARGB32);
    const qsizetype lineBytes = qsizetype{source.width()} * 4;
    QByteArray pixels(lineBytes * source.height(), Qt::Uninitialized);
    for (int y = 0; y < source.height(); ++y) {
        qToBigEndian<quint32>(source.constScanLine(y), source.width(),
                              pixels.data() + y * lineBytes);
    }
    return {source.width(), source.height(), pixels};
}

StatusNotifierItem::StatusNotifierItem()
    : m_iconName(installedTrayIconName())
{
    qDBusRegisterMetaType<StatusNotifierPixmap>();
    qDBusRegisterMetaType<StatusNotifierPixmapList>();
    qDBusRegisterMetaType<StatusNotifierToolTip>();
    for (const QImage &icon : drawTrayIcons())
        m_iconPixmap.append(toStatusNotifierPixmap(icon));
}

} // namespace velmora
