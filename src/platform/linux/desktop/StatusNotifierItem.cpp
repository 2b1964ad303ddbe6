#include "platform/linux/desktop/StatusNotifierItem.h"

#include <QDBusMetaType>
#include <QtEndian>

#include <utility>

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

StatusNotifierItem::StatusNotifierItem(QString menuPath, QString iconName,
                                       const QList<QImage> &icons, QString accessibleDescription)
    : m_menuPath(std::move(menuPath))
    , m_iconName(std::move(iconName))
    , m_accessibleDescription(std::move(accessibleDescription))
{
    qDBusRegisterMetaType<StatusNotifierPixmap>();
    qDBusRegisterMetaType<StatusNotifierPixmapList>();
    qDBusRegisterMetaType<StatusNotifierToolTip>();
    for (const QImage &icon : icons)
        m_iconPixmap.append(toStatusNotifierPixmap(icon));
}

} // namespace velmora
