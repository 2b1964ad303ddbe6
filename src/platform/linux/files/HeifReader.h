#pragma once

#include <QByteArray>
#include <QImage>

namespace velmora
{

/// Decodes the main image of an HEIF file (HEIC, AVIF), upright, with its colour profile; 16 bits a
/// channel if the file has more than 8. Null if the file is damaged, has more than `mostPixels`,
/// or libheif is not installed. Any thread.
///
/// There is no such reader for Qt 6 among Debian's packages. The library is loaded when the first
/// image comes: it brings video codecs along that nobody needs otherwise.
[[nodiscard]] QImage readHeif(const QByteArray &path, qint64 mostPixels);

} // namespace velmora
