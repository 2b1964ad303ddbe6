#include "platform/linux/files/LinuxImageConverter.h"

#include "platform/LocalPath.h"
#include "platform/linux/UniqueFd.h"
#include "platform/linux/files/FileItems.h"
#include "platform/linux/files/HeifReader.h"

#include <QColorSpace>
#include <QFile>
#include <QImage>
#include <QImageReader>
#include <QImageWriter>
#include <QPainter>
#include <QTransform>

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <new>
#include <utility>

namespace velmora
{

namespace
{

constexpr int mostMegabytes = 512; // decoded: more than a hundred megapixels
constexpr qint64 mostPixels = qint64{mostMegabytes} * 1024 * 1024 / 4;

bool isTaken(const QByteArray &format)
{
    static constexpr std::array formats{"jpeg", "jpg", "png", "tiff", "tif", "bmp", "gif", "webp"};
    return std::find(formats.begin(), formats.end(), format) != formats.end();
}

/// The reader could do this itself, but forgets the colour profile over it.
QImage upright(QImage image, QImageIOHandler::Transformations transformation)
{
    const QColorSpace colors = image.colorSpace();
    // In this order: a turned image that is mirrored as well is mirrored first.
    image.mirror(transformation & QImageIOHandler::TransformationMirror,
                 transformation & QImageIOHandler::TransformationFlip);
    if (transformation & QImageIOHandler::TransformationRotate90) {
        image = image.transformed(QTransform().rotate(90));
    }
    image.setColorSpace(colors);
    return image;
}

/// The image in a file of one of the formats that are taken, upright, told by its content and not
/// by its name; its first frame where there are several. Null if there is none, or it is damaged or
/// too large.
QImage readImage(const QByteArray &path)
{
    QFile file;
    UniqueFd fd = openPlainFile(path.constData());
    if (!fd.isOpen() ||
        !file.open(fd.release(), QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
        return {};
    }
    if (file.peek(8).endsWith("ftyp")) {
        return readHeif("/proc/self/fd/" + QByteArray::number(file.handle()), mostPixels);
    }
    QImageReader reader(&file);
    reader.setDecideFormatFromContent(true);
    if (!isTaken(reader.format())) {
        return {};
    }
    return upright(reader.read(), reader.transformation());
}

/// Makes an image of what the format can hold: without transparency, and in sRGB, where it knows
/// neither.
void fitImage(QImage &image, const QByteArray &format)
{
    const bool isPlain = format == "bmp";
    const bool isTransparent = image.hasAlphaChannel();
    if (isTransparent && image.colorCount() > 0) {
        // Only PNG has palettes with transparency, and no other can be painted on.
        image.convertTo(QImage::Format_ARGB32);
    }
    if (isTransparent && (isPlain || format == "jpeg")) {
        // On white, as on paper.
        QPainter painter(&image);
        painter.setCompositionMode(QPainter::CompositionMode_DestinationOver);
        painter.fillRect(image.rect(), Qt::white);
    }
    if (isPlain && image.colorSpace().isValid()) {
        image.convertToColorSpace(QColorSpace(QColorSpace::SRgb));
    }
}

/// Takes the first name of the rule that is free once it is complete.
ImageOutcome writeImage(const QImage &image, const ImageEncoding &encoding,
                        const QByteArray &target, NameRule rule)
{
    const QByteArray hidden = parentFolder(target) + '/' + hiddenName();
    ImageOutcome outcome;
    try {
        QFile file;
        const int fd = open(hidden.constData(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (fd < 0 || !file.open(fd, QIODevice::ReadWrite, QFileDevice::AutoCloseHandle)) {
            throw FileFailure(target, errno);
        }
        QImageWriter writer(&file, encoding.format);
        if (encoding.quality) {
            writer.setQuality(qRound(*encoding.quality * 100));
        }
        const bool isWritten = writer.write(image);
        file.flush();
        const QFileDevice::FileError error = file.error();
        file.close(); // tells what was not written, as flushing does
        if (error != QFileDevice::NoError || file.error() != QFileDevice::NoError) {
            throw FileFailure(target, file.errorString());
        }
        if (isWritten) {
            placeItem(hidden, target, rule);
            return {ImageOutcome::Result::Written, {}};
        }
    } catch (const FileFailure &failure) {
        outcome = {ImageOutcome::Result::Failed, failure.text};
    }
    unlink(hidden.constData());
    return outcome;
}

} // namespace

LinuxImageConverter::LinuxImageConverter()
    : m_worker(1)
{
    // The toolkit's own limit would turn away what today's cameras make.
    QImageReader::setAllocationLimit(mostMegabytes);
}

void LinuxImageConverter::convert(const QUrl &source, const ImageEncoding &encoding,
                                  const QUrl &target, NameRule rule, Done done)
{
    m_worker.run(
        [source, encoding, target, rule]() -> ImageOutcome {
            const auto from = localPath(source);
            const auto to = localPath(target);
            if (!from || !to) {
                return {};
            }
            try {
                QImage image = readImage(*from);
                if (image.isNull()) {
                    return {};
                }
                fitImage(image, encoding.format);
                return writeImage(image, encoding, *to, rule);
            } catch (const std::bad_alloc &) {
                return {};
            }
        },
        std::move(done));
}

} // namespace velmora
