#include "style/BottomRoundedShape.h"

#include <QImage>
#include <QPainter>
#include <QTest>

#include <algorithm>

using namespace velmora;

namespace
{

/// The pixels that the outline covers at least in part, found by drawing it. One margin wide around
/// the rectangle, so that a shape that pokes out is seen too. Drawn enlarged, since the rasteriser
/// knows 256 levels only and would lose what covers less than one of them.
QRegion drawnRegion(const QRectF &rect, double radius)
{
    constexpr int scale = 8;
    const QRect area = rect.toAlignedRect().adjusted(-2, -2, 2, 2);
    QImage image(area.size() * scale, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(scale, scale);
    painter.translate(-area.topLeft());
    painter.fillPath(bottomRoundedPath(rect, radius), Qt::black);
    painter.end();

    QRegion region;
    for (int y = 0; y < area.height(); ++y) {
        for (int x = 0; x < area.width(); ++x) {
            bool isTouched = false;
            for (int i = 0; i < scale * scale && !isTouched; ++i) {
                isTouched = qAlpha(image.pixel(x * scale + i % scale, y * scale + i / scale)) > 0;
            }
            if (isTouched) {
                region += QRect(area.x() + x, area.y() + y, 1, 1);
            }
        }
    }
    return region;
}

int pixels(const QRegion &region)
{
    int count = 0;
    for (const QRect &rect : region) {
        count += rect.width() * rect.height();
    }
    return count;
}

} // namespace

class BottomRoundedShapeTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void outline();
    void regionIsWhatTheOutlineTouches_data();
    void regionIsWhatTheOutlineTouches();
    void hardEdgesGoByTheCentresOfPixels();
    void emptyRectanglesHaveNoPixels();
};

void BottomRoundedShapeTest::outline()
{
    const QPainterPath path = bottomRoundedPath({10, 0, 200, 36}, 10);
    QCOMPARE(path.boundingRect(), QRectF(10, 0, 200, 36));
    QVERIFY(path.contains(QPointF(10.1, 0.1))); // square at the top
    QVERIFY(path.contains(QPointF(209.9, 25.9)));
    // Half-way round, the curve is a quarter of the radius from both sides: 2.5, where an arc would
    // be at 2.93.
    QVERIFY(path.contains(QPointF(12.6, 33.4)));
    QVERIFY(!path.contains(QPointF(12.4, 33.6)));
    QVERIFY(path.contains(QPointF(207.4, 33.4)));
    QVERIFY(!path.contains(QPointF(207.6, 33.6)));
}

void BottomRoundedShapeTest::regionIsWhatTheOutlineTouches_data()
{
    QTest::addColumn<QRectF>("rect");
    QTest::addColumn<double>("radius");

    QTest::newRow("collapsed notch") << QRectF(860, 0, 200, 36) << 10.0;
    QTest::newRow("panel") << QRectF(0, 0, 800, 170) << 18.0;
    QTest::newRow("no radius") << QRectF(5, 3, 40, 20) << 0.0;
    QTest::newRow("small radius") << QRectF(5, 3, 40, 20) << 0.4;
    QTest::newRow("one pixel of radius") << QRectF(5, 3, 40, 20) << 1.0;
    QTest::newRow("fractional radius") << QRectF(5, 3, 40, 20) << 7.3;
    QTest::newRow("half the width") << QRectF(0, 0, 24, 30) << 12.0;
    QTest::newRow("the height") << QRectF(0, 0, 90, 18) << 18.0;
    QTest::newRow("more than half the width") << QRectF(0, 0, 24, 30) << 14.0;
    QTest::newRow("the width") << QRectF(0, 0, 24, 30) << 24.0;
    QTest::newRow("more than the height") << QRectF(0, 0, 90, 18) << 24.0;
    QTest::newRow("more than the screen") << QRectF(0, 0, 90, 18) << 1000.0;
    QTest::newRow("fractional left and right") << QRectF(3.25, 0, 41.5, 20) << 8.0;
    QTest::newRow("fractional bottom") << QRectF(3, 0, 41, 20.4) << 8.0;
    QTest::newRow("fractional throughout") << QRectF(3.7, 1.2, 40.6, 19.9) << 6.5;
    QTest::newRow("left of the origin") << QRectF(-30.5, -10.25, 41, 20) << 6.0;
    QTest::newRow("less than a pixel") << QRectF(3.2, 1.2, 0.5, 0.5) << 0.1;
}

void BottomRoundedShapeTest::regionIsWhatTheOutlineTouches()
{
    QFETCH(const QRectF, rect);
    QFETCH(const double, radius);
    const QRegion region = bottomRoundedRegion(rect, radius);
    // The item paints inside its own bounds only.
    const QRegion drawn = drawnRegion(rect, radius) & rect.toAlignedRect();
    const QRegion cutOff = drawn - region;
    const QRegion tooMuch = region - drawn;
    QVERIFY2(cutOff.isEmpty(),
             qPrintable(QString::asprintf("%d pixels cut off, the first at %d, %d", pixels(cutOff),
                                          cutOff.boundingRect().x(), cutOff.boundingRect().y())));
    if (radius > std::min(rect.width() / 2, rect.height())) {
        return; // such an outline crosses itself: what matters is that nothing is cut off
    }
    // A sliver too thin for the rasteriser may be missing from the drawing, one to a corner.
    QVERIFY2(pixels(tooMuch) <= 2, qPrintable(QString::asprintf(
                                       "%d pixels too many, the first at %d, %d", pixels(tooMuch),
                                       tooMuch.boundingRect().x(), tooMuch.boundingRect().y())));
}

void BottomRoundedShapeTest::hardEdgesGoByTheCentresOfPixels()
{
    for (const double scale : {1.0, 1.25, 2.0}) {
        for (const QRectF &notch : {QRectF(860, 0, 200, 36), QRectF(300.3, 0, 641.7, 70.45)}) {
            const QRectF rect(notch.topLeft() * scale, notch.size() * scale);
            const QPainterPath path = bottomRoundedPath(rect, 10 * scale);
            const QRegion region = bottomRoundedRegion(rect, 10 * scale, PixelRule::Centre);
            const int corner = int(12 * scale);
            for (int i = 0; i < 2 * corner; ++i) {
                const int x =
                    i < corner ? int(rect.left()) - 2 + i : int(rect.right()) + 2 - i + corner;
                for (int y = 0; y < rect.bottom() + 2; ++y) {
                    const QPointF centre(x + 0.5, y + 0.5);
                    const QPointF slack(0.01, 0); // the test's outline is made of lines
                    if (path.contains(centre - slack) == path.contains(centre + slack)) {
                        QCOMPARE(region.contains(QPoint(x, y)), path.contains(centre));
                    }
                }
            }
        }
    }
}

void BottomRoundedShapeTest::emptyRectanglesHaveNoPixels()
{
    for (const QRectF &rect : {QRectF(), QRectF(1.5, 0, 200, 0), QRectF(1.5, 0, 0, 36),
                               QRectF(50, 0, -20, 36), QRectF(50, 10, 20, -36)}) {
        for (const double radius : {0.0, 10.0, -10.0, 1e9}) {
            QVERIFY(bottomRoundedRegion(rect, radius).isEmpty());
            QVERIFY(roundedRegion(rect, radius).isEmpty());
        }
    }
}

QTEST_MAIN(BottomRoundedShapeTest)
#include "BottomRoundedShapeTest.moc"
