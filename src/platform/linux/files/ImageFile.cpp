#include "platform/linux/files/ImageFile.h"

#include "platform/LocalPath.h"
#include "platform/linux/UniqueFd.h"
#include "platform/linux/files/FileFailure.h"
#include "platform/linux/files/HeifReader.h"
#include "platform/linux/files/PartFiles.h"
#include "platform/linux/files/Placement.h"

#include <QColorSpace>
#include <QFile>
#include <QImageReader>
#include <QImageWriter>
#include <QPainter>
#include <QTransform>

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <mutex>
#include <sys/stat.h>

namespace velmora
{

namespace
{

constexpr int mostMegabytes = 512; // decoded: more than a hundred megapixels
constexpr qint64 mostBytes = qint64{mostMegabytes} * 1024 * 1024;

bool isTaken(const QByteArray &format)
{
    static constexpr std::array formats{"jpeg", "jpg", "png", "tiff", "tif", "bmp", "gif", "webp"};
    return std::find(formats.begin(), formats.end(), format) != formats.end();
}

/// Null unless it is a plain file: a pipe would keep us waiting.
UniqueFd openPlainFile(const QByteArray &path)
{
    UniqueFd fd(open(path.constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat info = {};
    return fd.isOpen() && fstat(fd.get(), &info) == 0 && S_ISREG(info.st_mode) ? std::move(fd)
                                                                               : UniqueFd();
}

bool isTooLarge(const QImageReader &reader)
{
    const QSize size = reader.size();
    const QPixelFormat format = QImage::toPixelFormat(reader.imageFormat() == QImage::Format_Invalid
                                                          ? QImage::Format_ARGB32
                                                          : reader.imageFormat());
    return size.isValid() &&
           qint64{size.width()} * size.height() * (format.bitsPerPixel() / 8) > mostBytes;
}

/// The reader could do this itself, but forgets the colour profile over it.
QImage upright(QImage image, QImageIOHandler::Transformations transformation)
{
    const QColorSpace colors = image.colorSpace();
    if (transformation & QImageIOHandler::TransformationRotate90) {
        image = image.transformed(QTransform().rotate(90));
    }
    const bool isMirrored = transformation & QImageIOHandler::TransformationMirror;
    const bool isFlipped = transformation & QImageIOHandler::TransformationFlip;
    if (isMirrored || isFlipped) {
        image.mirror(isMirrored, isFlipped);
    }
    image.setColorSpace(colors);
    return image;
}

const char *formatName(ImageEncoding::Type type)
{
    switch (type) {
    case ImageEncoding::Type::Jpeg:
        return "jpeg";
    case ImageEncoding::Type::Tiff:
        return "tiff";
    case ImageEncoding::Type::Bmp:
        return "bmp";
    case ImageEncoding::Type::Png:
        break;
    }
    return "png";
}

ImageOutcome failed(const QByteArray &path, int code)
{
    return {ImageOutcome::Result::Failed, FileFailure(path, code).text()};
}

} // namespace

QImage readImage(const QByteArray &path)
{
    QFile file;
    UniqueFd fd = openPlainFile(path);
    if (!fd.isOpen() ||
        !file.open(fd.release(), QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
        return {};
    }
    if (looksLikeHeif(file.peek(12))) {
        return readHeif("/proc/self/fd/" + QByteArray::number(file.handle()), mostBytes / 4);
    }
    // The toolkit's own limit would turn away what today's cameras make.
    static std::once_flag once;
    std::call_once(once, [] { QImageReader::setAllocationLimit(mostMegabytes); });
    QImageReader reader(&file);
    reader.setDecideFormatFromContent(true);
    if (!isTaken(reader.format()) || isTooLarge(reader)) {
        return {};
    }
    return upright(reader.read(), reader.transformation());
}

void fitImage(QImage &image, ImageEncoding::Type type)
{
    const bool isPlain = type == ImageEncoding::Type::Bmp;
    const bool isTransparent = image.hasAlphaChannel();
    if (isTransparent && image.colorCount() > 0) {
        // Only PNG has palettes with transparency, and no other can be painted on.
        image.convertTo(QImage::Format_ARGB32);
    }
    if (isTransparent && (isPlain || type == ImageEncoding::Type::Jpeg)) {
        // On white, as on paper.
        QPainter painter(&image);
        painter.setCompositionMode(QPainter::CompositionMode_DestinationOver);
        painter.fillRect(image.rect(), Qt::white);
    }
    if (isPlain && image.colorSpace().isValid()) {
        image.convertToColorSpace(QColorSpace(QColorSpace::SRgb));
    }
}

ImageOutcome writeImage(const QImage &image, const ImageEncoding &encoding,
                        const QByteArray &target, NameRule rule)
{
    const QByteArray folder = parentFolder(target);
    const UniqueFd parent(open(folder.constData(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!parent.isOpen()) {
        return failed(target, errno);
    }
    const QByteArray temporary = temporaryName();
    const int fd = openat(parent.get(), temporary.constData(),
                          O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
    if (fd < 0) {
        return failed(target, errno);
    }
    ImageOutcome outcome;
    QFile file;
    file.open(fd, QIODevice::ReadWrite, QFileDevice::AutoCloseHandle);
    QImageWriter writer(&file, formatName(encoding.type));
    if (encoding.quality) {
        writer.setQuality(qRound(*encoding.quality * 100));
    }
    const bool isWritten = writer.write(image);
    file.flush();
    if (file.error() != QFileDevice::NoError) {
        outcome = {ImageOutcome::Result::Failed,
                   readableName(target) + QStringLiteral(": ") + file.errorString()};
    } else if (isWritten) {
        const int result = place({parent.get(), temporary, parent.get(), fileName(target)}, rule);
        outcome =
            result == 0 ? ImageOutcome{ImageOutcome::Result::Written, {}} : failed(target, result);
    }
    if (outcome.result != ImageOutcome::Result::Written) {
        unlinkat(parent.get(), temporary.constData(), 0);
    }
    return outcome;
}

} // namespace velmora
