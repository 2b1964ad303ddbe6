#pragma once

#include <QImage>

class QByteArray;

namespace velmora
{

/// The longest side of a cover in memory, in pixels: sharp at the largest scale at which one is
/// shown, and a quarter of a megabyte at most.
inline constexpr int coverSide = 256;

/// Decodes a cover that some program or server sent: an ordinary format, upright, no larger than
/// `coverSide`, in memory that a picture of absurd dimensions cannot exhaust. Null if it is none of
/// that. Takes milliseconds: for another thread than the main one.
[[nodiscard]] QImage decodeCover(const QByteArray &bytes);

} // namespace velmora
