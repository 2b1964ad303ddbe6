#include "overlay/NotchGeometry.h"

#include <QTest>

using namespace velmora;

class NotchGeometryTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void places();
    void sizesOfNoSense();
    void zoneWidths();
    void dropSlots();
};

void NotchGeometryTest::places()
{
    const QRectF usual(0, 0, 1600, 900);
    const struct {
        QRectF screen;
        QSizeF size;
        QRectF collapsed; // global, like the panel
        QRectF panel;
    } rows[]{{usual, {200, 36}, {700, 0, 200, 36}, {400, 0, 800, 110}},
             {usual, {1000, 36}, {300, 0, 1000, 36}, {400, 0, 800, 110}},
             {{1600, 300, 1000, 500}, {300, 24}, {1950, 300, 300, 24}, {1700, 300, 800, 110}},
             {{0, 0, 640, 480}, {200, 36}, {220, 0, 200, 36}, {0, 0, 640, 110}}};
    for (const auto &row : rows) {
        NotchSettings settings;
        settings.notchWidth = row.size.width();
        settings.notchHeight = row.size.height();
        const NotchGeometry geometry(row.screen, settings);
        const QRectF window = geometry.window;
        QCOMPARE(geometry.collapsed.translated(window.topLeft()), row.collapsed);
        QCOMPARE(geometry.panel.translated(window.topLeft()), row.panel);
        QVERIFY(window.contains(row.panel) && window.contains(row.collapsed));
        QVERIFY(row.screen.contains(window));
        QCOMPARE(window.center().x(), row.screen.center().x());
    }
}

void NotchGeometryTest::sizesOfNoSense()
{
    for (const double value : {-5.0, 1e4, 1e60, 1e300, qInf(), -qInf(), qQNaN(), 1e-320}) {
        NotchSettings settings;
        settings.notchWidth = settings.notchHeight = value;
        settings.cornerRadius = settings.expandedTopPadding = value;
        settings.zoneWidths = {1, value, 1, 1, 1};
        for (const QRectF &screen : {QRectF(0, 0, 1601, 900), QRectF(-300, 7, 300, 80)}) {
            const NotchGeometry geometry(screen, settings);
            const QRectF window(QPointF(), geometry.window.size());
            QVERIFY(screen.contains(geometry.window));
            QVERIFY(geometry.panel.isValid() && window.contains(geometry.panel));
            QVERIFY(geometry.collapsed.left() >= 0 && geometry.collapsed.right() <= window.right());
            const double radius = geometry.cornerRadius;
            QVERIFY(radius >= 0 && radius <= geometry.collapsed.height());
            QVERIFY(geometry.topPadding >= 0 && geometry.topPadding <= screen.height());
            for (const double width : geometry.zoneWidths) {
                QVERIFY(width >= 0 && width <= window.width());
            }
        }
    }
}

void NotchGeometryTest::zoneWidths()
{
    for (const auto &[weight, share] : {std::pair(1.0, 0.2), {0.0, 0.3 / 4.3}, {6.0, 0.6}}) {
        NotchSettings settings;
        settings.zoneWidths.front() = weight;
        const auto widths = NotchGeometry(QRectF(0, 0, 632, 900), settings).zoneWidths;
        QCOMPARE(widths.size(), 5);
        QCOMPARE(widths.front(), 600 * share);
        QCOMPARE(widths.back(), 600 * (1 - share) / 4);
    }
}

void NotchGeometryTest::dropSlots()
{
    const NotchGeometry geometry(QRectF(0, 0, 602, 900), {});
    // Four slots of 141 and gaps of 6, from 10 on. The margin at the left counts for the first one,
    // up to a slot's width beyond the panel; a gap for the one on its left.
    for (const auto &[x, slot] :
         {std::pair(-137, -1), {-136, 0}, {156, 0}, {157, 1}, {597, 3}, {598, -1}}) {
        QCOMPARE(geometry.dropSlotAt(x, 4), slot);
    }
    QCOMPARE(geometry.dropSlotAt(300, 1), 0);
    QCOMPARE(geometry.dropSlotAt(300, 0), -1);
}

QTEST_APPLESS_MAIN(NotchGeometryTest)
#include "NotchGeometryTest.moc"
