#include "style/BottomRoundedShape.h"

#include <QImage>
#include <QPainter>
#include <QTest>

#include <algorithm>
#include <numeric>

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

    const QImage blank = image.copy(0, 0, scale, scale); // of the margin
    QRegion region;
    for (int y = 0; y < area.height(); ++y) {
        for (int x = 0; x < area.width(); ++x) {
            if (image.copy(x * scale, y * scale, scale, scale) != blank) {
                region += QRect(area.x() + x, area.y() + y, 1, 1);
            }
        }
    }
    return region;
}

int pixels(const QRegion &region)
{
    return std::accumulate(region.begin(), region.end(), 0, [](int sum, const QRect &rect) {
        return sum + rect.width() * rect.height();
    });
}

} // namespace

class BottomRoundedShapeTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void outline();
    void regionIsWhatTheOutlineTouches();
    void hardEdgesGoByTheCentresOfPixels();
};

void BottomRoundedShapeTest::outline()
{
    const QPainterPath path = bottomRoundedPath({10, 0, 200, 36}, 10);
    QCOMPARE(path.boundingRect(), QRectF(10, 0, 200, 36));
    QVERIFY(path.contains(QPointF(10.1, 0.1))); // square at the top
    QVERIFY(path.contains(QPointF(209.9, 25.9)));
    // Half-way round, the curve is a quarter of the radius from both sides: 2.5, where an arc would
    // be at 2.93.
    QVERIFY(path.contains(QPointF(12.6, 33.4)) && !path.contains(QPointF(12.4, 33.6)));
    QVERIFY(path.contains(QPointF(207.4, 33.4)) && !path.contains(QPointF(207.6, 33.6)));
}

void BottomRoundedShapeTest::regionIsWhatTheOutlineTouches()
{
    const std::pair<QRectF, double> rows[]{
        {{860, 0, 200, 36}, 10},        {{0, 0, 800, 170}, 18},     {{5, 3, 40, 20}, 0},
        {{5, 3, 40, 20}, 0.4},          {{5, 3, 40, 20}, 7.3},      {{0, 0, 24, 30}, 12},
        {{0, 0, 24, 30}, 14},           {{0, 0, 90, 18}, 1000},     {{3.7, 1.2, 40.6, 19.9}, 6.5},
        {{-30.5, -10.25, 41, 20}, 6.0}, {{3.2, 1.2, 0.5, 0.5}, 0.1}};
    for (const QRectF &empty : {QRectF(1.5, 0, 200, 0), QRectF(50, 10, 20, -36)}) {
        QVERIFY(bottomRoundedRegion(empty, 10).isEmpty() && roundedRegion(empty, 10).isEmpty());
    }
    for (const auto &[rect, radius] : rows) {
        const QRegion region = bottomRoundedRegion(rect, radius);
        // The item paints inside its own bounds only.
        const QRegion drawn = drawnRegion(rect, radius) & rect.toAlignedRect();
        const QByteArray name = QByteArray::number(rect.width()) + ' ' + QByteArray::number(radius);
        QVERIFY2((drawn - region).isEmpty(), name); // nothing is cut off
        // Beyond half its size, such an outline crosses itself. A sliver too thin for the
        // rasteriser may be missing from the drawing, one to a corner.
        QVERIFY2(radius > std::min(rect.width() / 2, rect.height()) || pixels(region - drawn) <= 2,
                 name);
    }
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

QTEST_MAIN(BottomRoundedShapeTest)
#include "BottomRoundedShapeTest.moc"
