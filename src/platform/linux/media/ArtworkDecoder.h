#pragma once

#include <QByteArray>
#include <QImage>
#include <QSet>
#include <QString>

/// Covers, from wherever a player points to. These functions take their time and run beside the
/// main loop; they touch nothing shared.
namespace velmora::artwork
{

constexpr qint64 maximumBytes = 16'777'216;

struct Decoded {
    QString key;  ///< names the content: changes when a file is written anew
    QImage image; ///< null if it could not be had, or if the key is among those known already
};

/// A regular file of at most `maximumBytes`.
[[nodiscard]] Decoded decodeFile(const QString &path, const QSet<QString> &knownKeys);

/// An address that holds the data itself ("data:image/png;base64,…").
[[nodiscard]] QImage decodeInline(const QString &address);

} // namespace velmora::artwork
