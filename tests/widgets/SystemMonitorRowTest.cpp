#include "widgets/ShownWidget.h"

using namespace velmora;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class SystemMonitorRowTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void figures();
    void zerosAreNoEights();
};

void SystemMonitorRowTest::figures()
{
    constexpr double gibibyte = 1024.0 * 1024 * 1024;
    const struct {
        std::uint64_t load; // percent
        double memory;
        double memoryTotal;
        double disk;
        double diskTotal;
        QString shown; // of each gauge: text, length of the bar, colour
    } rows[]{
        {0, 0, 0, 0, 0, u"0% 0 green, 0.0G 0 green, \u2014 0 green"_s},
        {65, 7.1875, 16, 280, 400, u"65% 0.65 green, 7.2G 0.449 green, 120G free 0.7 orange"_s},
        {66, 4, 0, 1, 2, u"66% 0.66 orange, 4.0G 0 green, 1G free 0.5 green"_s},
        {85, 24, 16, 99.5, 100, u"85% 0.85 orange, 24.0G 1.5 red, 512M free 0.995 red"_s},
        {86, 4, 16, 0, 9e5, u"86% 0.86 red, 4.0G 0.25 green, 900000G free 0 green"_s}};
    const QMap<QString, QString> colors{{QColor::fromRgbF(0.35F, 0.85F, 0.5F).name(), u"green"_s},
                                        {QColor::fromRgbF(1.0F, 0.6F, 0.2F).name(), u"orange"_s},
                                        {QColor::fromRgbF(1.0F, 0.35F, 0.3F).name(), u"red"_s}};
    ShownWidget shown("systemMonitor", 154);
    FakeStatistics &statistics = shown.platform.statistics;
    CoreTicks ticks{};
    for (const auto &row : rows) {
        ticks[0] += row.load;
        ticks[2] += 100 - row.load;
        statistics.ticks = {{0, ticks}};
        statistics.memorySize = MemorySize{std::uint64_t(row.memory * gibibyte),
                                           std::uint64_t(row.memoryTotal * gibibyte)};
        statistics.disk = {(row.diskTotal - row.disk) * gibibyte, row.diskTotal * gibibyte};
        shown.clock.advance(2s);
        QStringList gauges;
        for (int i = 0; i < 3; ++i) {
            const QQuickItem *bar = shown.items("MiniBar").at(i);
            gauges << u"%1 %2 %3"_s.arg(shown.texts("TabularText").at(i),
                                        QString::number(bar->property("value").toDouble(), 'g', 3),
                                        colors.value(bar->property("fill").value<QColor>().name()));
        }
        QCOMPARE(gauges.join(u", "_s), row.shown);
    }
    // However long a text is, it ends with the zone.
    const QRectF last = ShownWidget::place(*shown.items("TabularText").last());
    QVERIFY(last.right() <= 144 && last.left() > 0);
    shown.end();
}

/// At this size an ink in the middle makes a zero an eight.
void SystemMonitorRowTest::zerosAreNoEights()
{
    ShownWidget shown("systemMonitor", 154);
    const QImage picture = shown.view.grabWindow();
    const QQuickItem *zero = qmlItems(*shown.items("TabularText").front(), "NotchText").front();
    QCOMPARE(zero->property("text").toString(), u"0"_s);
    const QRect cell = ShownWidget::place(*zero).toAlignedRect();
    int rim = 0;
    int middle = 255;
    for (int x = cell.left(); x <= cell.right(); ++x) {
        const int ink = qGray(picture.pixel(x, cell.center().y()));
        rim = qMax(rim, ink);
        middle = x > cell.left() && x < cell.right() ? qMin(middle, ink) : middle;
    }
    QVERIFY2(rim > 100 && middle < rim / 4, qPrintable(QString::asprintf("%d, %d", rim, middle)));
    shown.end();
}

QTEST_MAIN(SystemMonitorRowTest)
#include "SystemMonitorRowTest.moc"
