#include "FileSamples.h"
#include "platform/LocalPath.h"
#include "platform/linux/files/LinuxImageConverter.h"
#include "support/EncodedImages.h"

#include <QColorSpace>
#include <QImageReader>
#include <QPainter>
#include <QTemporaryDir>
#include <QTest>

#include <sys/mount.h>

using namespace velmora;
using enum ImageOutcome::Result;

namespace
{

// 16 × 8, left half (200, 40, 10), right half (10, 60, 220), of 8 and of 10 bits.
constexpr char heic[] =
    "AAAAHGZ0eXBoZWljAAAAAG1pZjFoZWljbWlhZgAAAa1tZXRhAAAAAAAAACFoZGxyAAAAAAAAAABwaWN0AAAAAAAAAAAA"
    "AAAAAAAAAA5waXRtAAAAAAACAAAAEGlkYXQAAAAAABAACAAAADhpbG9jAQAAAERAAAIAAQAAAAAAAAHRAAEAAAAAAAAA"
    "iAACAAEAAAAAAAAAAQAAAAAAAAAIAAAAOGlpbmYAAAAAAAIAAAAVaW5mZQIAAAEAAQAAaHZjMQAAAAAVaW5mZQIAAAAA"
    "AgAAZ3JpZAAAAADYaXBycAAAALZpcGNvAAAAdmh2Y0MBA3AAAAAAAAAAAAAe8AD8/fj4AAAPAyAAAQAYQAEMAf//A3AA"
    "AAMAkAAAAwAAAwAeugJAIQABACpCAQEDcAAAAwCQAAADAAADAB6gIIEFluqumubgQEDAgAAAAwCAAAADAIQiAAEABkQB"
    "wXPBiQAAABRpc3BlAAAAAAAAAEAAAABAAAAAFGlzcGUAAAAAAAAAEAAAAAgAAAAQcGl4aQAAAAADCAgIAAAAGmlwbWEA"
    "AAAAAAAAAgABAoECAAICA4QAAAAaaXJlZgAAAAAAAAAOZGltZwACAAEAAQAAAJBtZGF0AAAAhCgBrwYyGrgKgF1Ao9vf"
    "p//+909D44d/m+iJ33zPb//DYS6833IR4Nq1+8+7Ds3DW6iWoMJ9qAd0QtqR+TAe5XyUmRTaiyB4oFSYwCv4MF34YX/j"
    "HeNUaH+NwJD+BlQ7dtSfagHrWmcJlLqwjlwDzUrfm7QpiQHQhmo4cNO51LdrGcwDYA==";
constexpr char deepHeic[] =
    "AAAAHGZ0eXBoZWljAAAAAG1pZjFoZWljbWlhZgAAAaxtZXRhAAAAAAAAACFoZGxyAAAAAAAAAABwaWN0AAAAAAAAAAAA"
    "AAAAAAAAAA5waXRtAAAAAAACAAAAEGlkYXQAAAAAABAACAAAADhpbG9jAQAAAERAAAIAAQAAAAAAAAHQAAEAAAAAAAAA"
    "SQACAAEAAAAAAAAAAQAAAAAAAAAIAAAAOGlpbmYAAAAAAAIAAAAVaW5mZQIAAAEAAQAAaHZjMQAAAAAVaW5mZQIAAAAA"
    "AgAAZ3JpZAAAAADXaXBycAAAALVpcGNvAAAAdWh2Y0MBBAgAAAAAAAAAAAAe8AD8/fr6AAAPAyAAAQAXQAEMAf//BAgA"
    "AAMAnbgAAAMAAB66AkAhAAEAKkIBAQQIAAADAJ24AAADAAAeoCCBBNluqumubgQEDAgAAAMACAAAAwAIQCIAAQAGRAHB"
    "c8GJAAAAFGlzcGUAAAAAAAAAQAAAAEAAAAAUaXNwZQAAAAAAAAAQAAAACAAAABBwaXhpAAAAAAMKCgoAAAAaaXBtYQAA"
    "AAAAAAACAAECgQIAAgIDhAAAABppcmVmAAAAAAAAAA5kaW1nAAIAAQABAAAAUW1kYXQAAABFKAGvBjIaQgaAXUCj2963"
    "//73T0Pj5X+b6SXffNF3/8OpKVsY/TnlbnTlacj+gHLv/dza9IY2gHTCQ47OdulbjldwGUMg";
// 4 × 2, left half blue, right half red.
constexpr char gif[] = "R0lGODlhBAACAPAAAP8AAAAA/yH5BAAAAAAALAAAAAAEAAIAAAIETACGBQA7";

QByteArray numbered(const QByteArray &name, int attempt)
{
    return attempt == 0 ? name : name + ' ' + QByteArray::number(attempt);
}

/// Left half of one colour, right half of the other.
QImage halves(const QColor &left, const QColor &right, QImage::Format format, QSize size = {16, 8})
{
    QImage image(size, format);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            image.setPixelColor(x, y, x < size.width() / 2 ? left : right);
        }
    }
    return image;
}

bool isNear(const QColor &a, const QColor &b, int tolerance = 12)
{
    return qAbs(a.red() - b.red()) <= tolerance && qAbs(a.green() - b.green()) <= tolerance &&
           qAbs(a.blue() - b.blue()) <= tolerance && qAbs(a.alpha() - b.alpha()) <= tolerance;
}

} // namespace

class ImageConverterTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { discard(m_root); } // Qt's own clean-up knows text only
    void everyFormatIsRead();
    void uprightWhateverTheCamera();
    void profilesStay();
    void depthStays();
    void transparency();
    void whatIsNoImageIsSkipped();
    void namesAndFailures();

private:
    ImageOutcome convert(const QByteArray &source, const ImageEncoding &encoding,
                         const QByteArray &target);
    /// Converts an encoded image and reads what came out.
    QImage converted(const QByteArray &data, const QByteArray &format);
    [[nodiscard]] QByteArray path(const QByteArray &name) const { return m_root + '/' + name; }

    std::unique_ptr<QTemporaryDir> m_folder;
    QByteArray m_root;
    LinuxImageConverter m_converter;
};

void ImageConverterTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_root = QFile::encodeName(m_folder->path());
}

ImageOutcome ImageConverterTest::convert(const QByteArray &source, const ImageEncoding &encoding,
                                         const QByteArray &target)
{
    return answerOf<ImageOutcome>([&](const auto &done) {
        m_converter.convert(fileUrl(source), encoding, fileUrl(target), numbered, done);
    });
}

QImage ImageConverterTest::converted(const QByteArray &data, const QByteArray &format)
{
    writeFile(path("source"), data);
    unlink(path("target").constData());
    const ImageOutcome outcome = convert(path("source"), {format, 0.9}, path("target"));
    return outcome.result == Written ? QImage(QFile::decodeName(path("target"))) : QImage();
}

void ImageConverterTest::everyFormatIsRead()
{
    const QColor left(200, 40, 10);
    const QColor right(10, 60, 220);
    QList<QByteArray> samples{QByteArray::fromBase64(heic), QByteArray::fromBase64(deepHeic)};
    for (const char *format : {"png", "jpeg", "bmp", "tiff", "webp"}) {
        samples << encoded(halves(left, right, QImage::Format_RGB32, {64, 32}), format);
    }
    for (const QByteArray &data : std::as_const(samples)) {
        QVERIFY2(!data.isEmpty(), "this machine cannot write the sample");
        for (const char *format : {"png", "jpeg", "tiff", "bmp"}) {
            const QImage image = converted(data, format);
            QVERIFY2(!image.isNull(), format);
            QCOMPARE(QImageReader::imageFormat(QFile::decodeName(path("target"))),
                     QByteArray(format));
            QVERIFY2(isNear(image.pixelColor(0, image.height() / 2), left), format);
            QVERIFY2(isNear(image.pixelColor(image.width() - 1, 0), right), format);
        }
    }
    const QImage image = converted(QByteArray::fromBase64(gif), "png");
    QCOMPARE(image.pixelColor(0, 1), QColor(Qt::blue));
    QCOMPARE(image.pixelColor(3, 0), QColor(Qt::red));
}

void ImageConverterTest::uprightWhateverTheCamera()
{
    // Where the upper corners of the upright image are stored, for the eight orientations of Exif.
    const std::pair<QPoint, QPoint> corners[] = {
        {{0, 0}, {16, 0}}, {{16, 0}, {0, 0}}, {{16, 8}, {0, 8}},  {{0, 8}, {16, 8}},
        {{0, 0}, {0, 8}},  {{0, 8}, {0, 0}},  {{16, 8}, {16, 0}}, {{16, 0}, {16, 8}}};
    for (char orientation = 1; orientation <= 8; ++orientation) {
        const auto &[topLeft, topRight] = corners[orientation - 1];
        QImage image = halves(Qt::black, Qt::black, QImage::Format_RGB32, {32, 16});
        image.setColorSpace(QColorSpace(QColorSpace::DisplayP3));
        QPainter painter(&image);
        painter.fillRect(QRect(topLeft, QSize(16, 8)), Qt::red);
        painter.fillRect(QRect(topRight, QSize(16, 8)), Qt::blue);
        painter.end();
        const QImage upright = converted(turnedJpeg(image, orientation), "png");
        QCOMPARE(upright.size(), orientation < 5 ? QSize(32, 16) : QSize(16, 32));
        QVERIFY(isNear(upright.pixelColor(1, 1), Qt::red));
        QVERIFY(isNear(upright.pixelColor(upright.width() - 2, 1), Qt::blue));
        QVERIFY(isNear(upright.pixelColor(1, upright.height() - 2), Qt::black));
        QCOMPARE(upright.colorSpace(), QColorSpace(QColorSpace::DisplayP3));
    }
}

void ImageConverterTest::profilesStay()
{
    const QColor color(230, 60, 20);
    QImage image = halves(color, color, QImage::Format_RGB32);
    image.setColorSpace(QColorSpace(QColorSpace::DisplayP3));
    const QByteArray data = encoded(image, "png");
    for (const char *format : {"png", "jpeg", "tiff"}) {
        const QImage result = converted(data, format);
        QCOMPARE(result.colorSpace(), image.colorSpace());
        QVERIFY(isNear(result.pixelColor(4, 4), color));
    }
    image.convertToColorSpace(QColorSpace(QColorSpace::SRgb));
    QVERIFY(isNear(converted(data, "bmp").pixelColor(4, 4), image.pixelColor(4, 4), 2));
}

void ImageConverterTest::depthStays()
{
    QImage image(16, 8, QImage::Format_RGBX64);
    image.fill(QColor::fromRgba64(0x1234, 0x5678, 0x9ABC));
    for (const auto &[format, most] :
         {std::pair("png", 1), {"tiff", 1}, {"jpeg", 0x400}, {"bmp", 0x400}}) {
        const QRgba64 pixel = converted(encoded(image, "png"), format).pixelColor(3, 3).rgba64();
        QVERIFY(qAbs(pixel.red() - 0x1234) <= most);
        QVERIFY(qAbs(pixel.green() - 0x5678) <= most);
        QVERIFY(qAbs(pixel.blue() - 0x9ABC) <= most);
    }
}

void ImageConverterTest::transparency()
{
    for (const auto pixels :
         {QImage::Format_ARGB32, QImage::Format_RGBA64, QImage::Format_Indexed8}) {
        QImage image = halves(QColor(255, 0, 0, 255), QColor(0, 0, 0, 0), QImage::Format_ARGB32);
        image.convertTo(pixels);
        const QByteArray data = encoded(image, "png");
        for (const char *format : {"png", "tiff"}) {
            QCOMPARE(converted(data, format).pixelColor(12, 4).alpha(), 0);
        }
        for (const char *format : {"jpeg", "bmp"}) {
            const QImage result = converted(data, format);
            QVERIFY(isNear(result.pixelColor(1, 4), Qt::red));
            QVERIFY(isNear(result.pixelColor(14, 4), Qt::white));
        }
    }
}

void ImageConverterTest::whatIsNoImageIsSkipped()
{
    QImage detailed(200, 200, QImage::Format_RGB32);
    for (int i = 0; i < 40'000; ++i) {
        detailed.setPixel(i % 200, i / 200, static_cast<uint>(i * 2654435761U));
    }
    for (const QByteArray &data :
         {QByteArray(), QByteArray("\x89PNG\r\n\x1A\n") + QByteArray(5000, '\xA5'),
          encoded(detailed, "png").left(9000), QByteArray::fromBase64(heic).left(500),
          QByteArray("<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'/>"),
          claiming(60'000, 60'000)}) {
        writeFile(path("a.png"), data);
        QCOMPARE(convert(path("a.png"), {}, path("b.png")).result, Skipped);
        QCOMPARE(entries(m_root), QList<QByteArray>{"a.png"});
    }
}

void ImageConverterTest::namesAndFailures()
{
    const QByteArray source = path("\xFF\n.png");
    writeFile(source, encoded(halves(Qt::red, Qt::blue, QImage::Format_RGB32), "png"));
    QCOMPARE(convert(source, {}, source).result, Written);
    QCOMPARE(entries(m_root), (QList<QByteArray>{"\xFF\n.png", "\xFF\n.png 1"}));
    const ImageOutcome outcome = convert(source, {}, path("gone/b.png"));
    QCOMPARE(outcome.result, Failed);
    QCOMPARE(outcome.error, QStringLiteral("b.png: No such file or directory"));

    mkfifo(path("pipe.png").constData(), 0600);
    for (const char *name : {"pipe.png", "gone.png", ""}) {
        QCOMPARE(convert(path(name), {}, path("c.png")).result, Skipped);
    }

    if (geteuid() == 0) {
        // Half a megabyte onto a disk of a quarter.
        mkdir(path("small").constData(), 0755);
        if (mount("velmora-test", path("small").constData(), "tmpfs", 0, "size=256k") != 0) {
            QSKIP("Only root can make a small disk");
        }
        QImage large(600, 300, QImage::Format_RGB32);
        large.fill(Qt::red);
        writeFile(path("large.png"), encoded(large, "png"));
        const ImageOutcome full = convert(path("large.png"), {"bmp", {}}, path("small/large.bmp"));
        const auto left = entries(path("small"));
        umount2(path("small").constData(), MNT_DETACH);
        QCOMPARE(full.result, Failed);
        QVERIFY2(full.error.contains(QStringLiteral("No space left")), qPrintable(full.error));
        QVERIFY(left.isEmpty());
    }
}

QTEST_GUILESS_MAIN(ImageConverterTest)
#include "ImageConverterTest.moc"
