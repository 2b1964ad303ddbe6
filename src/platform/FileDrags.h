#pragma once

#include <QList>
#include <QObject>
#include <QUrl>

namespace velmora
{

/// File drags that begin anywhere on the desktop, as far as the window system lets others see them.
/// Where it does not, no signal is ever sent, and a drag is first seen when it reaches a window of
/// ours.
class FileDrags : public QObject
{
    Q_OBJECT

public:
    /// All files of the drag that goes on, or has just ended; empty as long as they are not known.
    [[nodiscard]] virtual QList<QUrl> files() const { return {}; }

Q_SIGNALS:
    /// Once for each drag that carries local files, as soon as it begins. Of very many files these
    /// are the first ones.
    void began(const QList<QUrl> &files);
    /// And then these are all of them.
    void completed(const QList<QUrl> &files);
    /// All buttons of the pointer are up again: the drag, if there was one, is over.
    void released();
};

/// The local files of a list of addresses (RFC 2483, "text/uri-list"), in order.
[[nodiscard]] QList<QUrl> localFilesOf(const QByteArray &uriList);

} // namespace velmora
