#pragma once

#include <QImage>

class QByteArray;

namespace velmora
{

/// The longest side of a cover in memory, in pixels: sharp at the largest scale at which one is
/// shown, and a quarter of a megabyte at most.
inline constexpr int coverSide = 256;

/// Decodes a cover that some program or server sent: JPEG, PNG, WebP, GIF or BMP by its content, of
/// at most 50 million pixels, turned upright and scaled down to `coverSide`. Null if it is none of
/// that. Takes milliseconds: for another thread than the main one.
[[nodiscard]] QImage decodeCover(const QByteArray &bytes);

} // namespace velmora
