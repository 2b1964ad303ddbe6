#pragma once

#include "platform/ImageConverter.h"

#include <QByteArray>
#include <QImage>

namespace velmora
{

/// Images in files. Any thread, one at a time: what a single image may take is half a gigabyte.

/// The image in a file of one of the formats that are taken, upright, told by its content and not
/// by its name; its first frame where there are several. Null if there is none, or it is damaged or
/// too large.
[[nodiscard]] QImage readImage(const QByteArray &path);

/// Makes an image of what the format can hold: without transparency, and in sRGB, where it knows
/// neither.
void fitImage(QImage &image, ImageEncoding::Type type);

/// Writes the image anew under the first name of the rule that is free, once it is complete.
[[nodiscard]] ImageOutcome writeImage(const QImage &image, const ImageEncoding &encoding,
                                      const QByteArray &target, NameRule rule);

} // namespace velmora
