#include "widgets/ShownWidget.h"

#include <QRegion>

#include <cmath>
#include <limits>
#include <numbers>
#include <optional>

using namespace velmora;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

// A point is no whole number of pixels then: nothing is to look ragged.
constexpr double scale = 1.25;
const bool isScaled = qputenv("QT_SCALE_FACTOR", "1.25");

} // namespace

class PomodoroWidgetViewTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_shown.emplace("pomodoro", 154); }
    void cleanup()
    {
        m_shown->end();
        m_shown.reset();
    }

    void showsTheState();
    void dotsCountSessions();
    void dotsAreRound();
    void digitsStandStill();
    void buttonsDriveTheService();

private:
    [[nodiscard]] PomodoroService &service() { return *m_shown->services.pomodoroService(); }
    [[nodiscard]] QString shown() const;
    [[nodiscard]] QList<QQuickItem *> dotItems() const;

    std::optional<ShownWidget> m_shown;
};

/// Time, phase, and the part of the bar in colour.
QString PomodoroWidgetViewTest::shown() const
{
    const QString phase = m_shown->items("WidgetHeader").constFirst()->property("note").toString();
    const double value = m_shown->items("MiniBar").constFirst()->property("value").toDouble();
    return u"%1 %2 %3"_s.arg(m_shown->texts("TabularText").constFirst(), phase).arg(value);
}

QList<QQuickItem *> PomodoroWidgetViewTest::dotItems() const
{
    auto items = m_shown->items("velmora::RoundedRectangle");
    items.removeIf([](const QQuickItem *item) { return item->width() != 5; });
    return items;
}

void PomodoroWidgetViewTest::showsTheState()
{
    QCOMPARE(shown(), u"25:00 WORK 0"_s);
    service().start();
    m_shown->clock.advance(375s);
    QCOMPARE(shown(), u"18:45 WORK 0.25"_s);
    m_shown->clock.advance(1125s);
    QCOMPARE(shown(), u"00:00 WORK 1"_s);
    m_shown->clock.advance(1s);
    QCOMPARE(shown(), u"05:00 BREAK 0"_s);
}

void PomodoroWidgetViewTest::dotsCountSessions()
{
    // One character a dot, from the left: O for one in the colour of the phase.
    const auto dots = [this] {
        QString dots;
        for (const QQuickItem *each : dotItems()) {
            const bool isLit = each->property("color").value<QColor>() == service().phaseColor();
            dots += isLit ? u'O' : u'.';
        }
        return dots;
    };
    QStringList seen;
    for (int phase = 0; phase < 8; ++phase) {
        seen << dots();
        service().skip();
    }
    QCOMPARE(seen.join(u' '), u".... O... O... OO.. OO.. OOO. OOO. ...."_s);
    service().setSessionsBeforeLongBreak(0);
    QCOMPARE(dots(), QString());
    service().setSessionsBeforeLongBreak(std::numeric_limits<qint64>::max());
    QCOMPARE(dots(), u"......"_s); // up to the buttons
    m_shown->view.resize(40, 90);
    QTRY_COMPARE(dots(), QString());
}

void PomodoroWidgetViewTest::dotsAreRound()
{
    const QImage picture = m_shown->view.grabWindow();
    QCOMPARE(picture.width(), qCeil(154 * scale));
    const auto coverage = [&picture](int x, int y) { return qGray(picture.pixel(x, y)) / 51.0; };
    for (const QQuickItem *item : dotItems()) {
        const QRectF place = ShownWidget::place(*item);
        const QRectF pixels(place.topLeft() * scale, place.size() * scale);
        const QRect area = pixels.toAlignedRect().adjusted(-1, -1, 1, 1);
        QRegion ink;
        double sum = 0;
        for (int i = 0; i < area.width() * area.height(); ++i) {
            const QPoint at = area.topLeft() + QPoint(i % area.width(), i / area.width());
            ink += coverage(at.x(), at.y()) > 0 ? QRect(at, QSize(1, 1)) : QRect();
            sum += coverage(at.x(), at.y());
        }
        QVERIFY2(qAbs(sum - std::numbers::pi * std::pow(2.5 * scale, 2)) < 4,
                 qPrintable(QString::number(sum)));
        const QRect dot = ink.boundingRect();
        for (const QRect &row : ink) { // it looks the same from each side
            for (int x = row.left(); x <= row.right(); ++x) {
                const double here = coverage(x, row.y());
                QVERIFY(qAbs(here - coverage(dot.left() + dot.right() - x, row.y())) < 0.2);
                QVERIFY(qAbs(here - coverage(x, dot.top() + dot.bottom() - row.y())) < 0.2);
            }
        }
    }
}

void PomodoroWidgetViewTest::digitsStandStill()
{
    const auto places = [this] {
        QList<QRectF> places;
        for (const QQuickItem *text : qmlItems(*m_shown->items("TabularText")[0], "NotchText")) {
            places << QRectF(text->mapToScene({0, 0}), QSizeF(text->width(), 1));
        }
        return places;
    };
    service().setWorkMinutes(11);
    service().start();
    m_shown->clock.advance(49s);
    QVERIFY(shown().startsWith(u"10:11"_s));
    const auto before = places();
    QCOMPARE(before.size(), 5);
    m_shown->clock.advance(3s);
    QVERIFY(shown().startsWith(u"10:08"_s));
    QCOMPARE(places(), before);
}

void PomodoroWidgetViewTest::buttonsDriveTheService()
{
    m_shown->checkHover(0.75F);
    m_shown->press({u"Start"_s});
    QVERIFY(service().isRunning());
    m_shown->press({u"Pause"_s, u"Skip"_s, u"Start"_s});
    QVERIFY(service().isRunning() && service().phase() == PomodoroPhase::shortBreak);
    m_shown->press({u"Reset"_s});
    QVERIFY(!service().isRunning() && service().phase() == PomodoroPhase::work);
}

QTEST_MAIN(PomodoroWidgetViewTest)
#include "PomodoroWidgetViewTest.moc"
