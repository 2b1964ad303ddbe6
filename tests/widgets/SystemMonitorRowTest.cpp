#include "widgets/SystemMonitorRow.h"

#include "widgets/ShownWidget.h"

#include <QTest>

using namespace velmora;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Kind = SystemMonitorRow::Kind;

namespace
{

constexpr double gibibyte = 1024.0 * 1024 * 1024;

const QColor green = QColor::fromRgbF(0.35F, 0.85F, 0.5F);
const QColor orange = QColor::fromRgbF(1.0F, 0.6F, 0.2F);
const QColor red = QColor::fromRgbF(1.0F, 0.35F, 0.3F);

} // namespace

class SystemMonitorRowTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void row();
    void view();
};

void SystemMonitorRowTest::row()
{
    struct Row {
        QString text;
        Kind kind;
        double figure; // load in percent, used memory, free space
        double total;
        double fraction;
        QColor color;
    };
    using enum SystemMonitorRow::Kind;
    const std::vector<Row> rows{
        {u"65%"_s, Processor, 65, 100, 0.65, green},
        {u"66%"_s, Processor, 66, 100, 0.66, orange},
        {u"85%"_s, Processor, 85, 100, 0.85, orange},
        {u"86%"_s, Processor, 86, 100, 0.86, red},
        {u"7.2G"_s, Memory, 7.1875, 16, 0.44921875, green},
        {u"24.0G"_s, Memory, 24, 16, 1.5, red},
        {u"4.0G"_s, Memory, 4, 0, 0, green},
        {u"120G free"_s, Disk, 120, 400, 0.7, orange},
        {u"1G free"_s, Disk, 1, 4, 0.75, orange},
        {u"512M free"_s, Disk, 0.5, 100, 0.995, red},
        {u"1024M free"_s, Disk, 0.9999, 100, 0.990001, red},
        {u"0M free"_s, Disk, 0, 100, 1, red},
        {u"\u2014"_s, Disk, 0, 0, 0, green},
    };
    for (const auto &[text, kind, figure, total, fraction, color] : rows) {
        VirtualClock clock;
        FakeSound sound;
        FakeStatistics statistics;
        statistics.ticks = {{0, {0, 0, 0, 0}}};
        SystemMonitorService monitor(clock, statistics, sound);
        SystemMonitorRow row;
        row.setProperty("kind", QVariant::fromValue(kind));
        row.setProperty("monitor", QVariant::fromValue(&monitor));
        row.componentComplete();
        const auto load = static_cast<std::uint64_t>(figure);
        statistics.ticks = {{0, {load, 0, 100 - load, 0}}};
        statistics.memorySize = MemorySize{static_cast<std::uint64_t>(figure * gibibyte),
                                           static_cast<std::uint64_t>(total * gibibyte)};
        statistics.disk = {figure * gibibyte, total * gibibyte};
        clock.advance(2s);
        QCOMPARE(row.text(), text);
        QCOMPARE(row.fraction(), fraction);
        QCOMPARE(row.color(), color);
    }
}

void SystemMonitorRowTest::view()
{
    ShownWidget shown("systemMonitor", 154);
    QCOMPARE(shown.texts("TabularText"), (QStringList{u"0%"_s, u"0.0G"_s, u"\u2014"_s}));
    // At this size an ink in the middle of a zero makes it an eight.
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

    shown.platform.statistics.disk = {gibibyte, 2 * gibibyte};
    shown.clock.advance(2s);
    QCOMPARE(shown.texts("TabularText").last(), u"1G free"_s);
    QCOMPARE(shown.items("MiniBar").last()->property("value"), 0.5);
    // However long a text is, it ends with the zone.
    shown.platform.statistics.disk = {9e5 * gibibyte, 9e5 * gibibyte};
    shown.clock.advance(2s);
    const QRectF figure = ShownWidget::place(*shown.items("TabularText").last());
    QVERIFY(figure.right() <= 144 && figure.left() > 0);
    shown.end();
}

QTEST_MAIN(SystemMonitorRowTest)
#include "SystemMonitorRowTest.moc"
