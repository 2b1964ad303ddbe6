#include "services/PomodoroService.h"
#include "support/FakeNotifications.h"
#include "support/MemoryStore.h"
#include "support/QmlItems.h"
#include "support/QmlWarnings.h"
#include "support/VirtualClock.h"

#include <QAccessible>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickView>
#include <QTest>
#include <QtQml/qqmlextensionplugin.h>

#include <limits>
#include <optional>

Q_IMPORT_QML_PLUGIN(Velmora_ServicesPlugin)
Q_IMPORT_QML_PLUGIN(Velmora_StylePlugin)
Q_IMPORT_QML_PLUGIN(Velmora_WidgetsPlugin)

using namespace velmora;
using namespace std::chrono_literals;

class PomodoroWidgetViewTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void showsTheState();
    void dotsCountSessions();
    void dotsAreNoMoreThanFit();
    void digitsStandStill();
    void buttonsDriveTheService();

private:
    [[nodiscard]] QList<QQuickItem *> items(const QByteArray &type) const;
    [[nodiscard]] QStringList texts() const;
    [[nodiscard]] QString dots() const;
    [[nodiscard]] double filled() const;
    void press(const QString &description);

    std::optional<QmlWarnings> m_warnings;
    VirtualClock m_clock;
    MemoryStore m_store;
    FakeNotifications m_notifications;
    std::unique_ptr<PomodoroService> m_service;
    std::unique_ptr<QQuickView> m_view;
};

void PomodoroWidgetViewTest::init()
{
    m_warnings.emplace();
    m_service = std::make_unique<PomodoroService>(m_clock, m_store, m_notifications);
    m_view = std::make_unique<QQuickView>();
    m_view->engine()->addImportPath(QStringLiteral("qrc:/qt/qml"));
    m_view->setResizeMode(QQuickView::SizeRootObjectToView);
    m_view->resize(154, 90);
    m_view->setInitialProperties(
        {{QStringLiteral("service"), QVariant::fromValue(m_service.get())}});
    m_view->setSource(QUrl(QStringLiteral("qrc:/qt/qml/Velmora/Widgets/PomodoroWidgetView.qml")));
    m_view->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
}

void PomodoroWidgetViewTest::cleanup()
{
    m_view.reset();
    m_service.reset();
    m_store.values.clear();
    const QStringList warnings = m_warnings->list();
    m_warnings.reset();
    QCOMPARE(warnings, QStringList());
}

QList<QQuickItem *> PomodoroWidgetViewTest::items(const QByteArray &type) const
{
    return qmlItems(*m_view->contentItem(), type);
}

/// The time, its characters joined, and then all other texts.
QStringList PomodoroWidgetViewTest::texts() const
{
    QStringList texts;
    for (const QQuickItem *line : items("TabularText")) {
        texts << line->property("text").toString();
    }
    for (const QQuickItem *text : items("NotchText")) {
        if (text->property("text").toString().size() > 1) {
            texts << text->property("text").toString();
        }
    }
    return texts;
}

/// One character a dot, from the left: O for one in the colour of the phase.
QString PomodoroWidgetViewTest::dots() const
{
    QString dots;
    for (const QQuickItem *each : items("QQuickRectangle")) {
        if (each->width() == 5 && each->height() == 5) {
            const bool isLit = each->property("color").value<QColor>() == m_service->phaseColor();
            dots += QLatin1Char(isLit ? 'O' : '.');
        }
    }
    return dots;
}

/// The part of the bar in colour.
double PomodoroWidgetViewTest::filled() const
{
    const QQuickItem *bar = items("MiniBar").constFirst();
    return bar->childItems().constFirst()->width() / bar->width();
}

void PomodoroWidgetViewTest::press(const QString &description)
{
    for (const QQuickItem *button : items("SymbolButton")) {
        if (button->property("description").toString() == description) {
            const QPointF centre(button->width() / 2, button->height() / 2);
            QTest::mouseClick(m_view.get(), Qt::LeftButton, {},
                              button->mapToScene(centre).toPoint());
            return;
        }
    }
    QFAIL(qPrintable(description));
}

void PomodoroWidgetViewTest::showsTheState()
{
    QCOMPARE(texts(), (QStringList{QStringLiteral("25:00"), QStringLiteral("Pomodoro"),
                                   QStringLiteral("WORK")}));
    QCOMPARE(filled(), 0.0);
    m_service->start();
    m_clock.advance(375s);
    QCOMPARE(texts().constFirst(), QStringLiteral("18:45"));
    QCOMPARE(filled(), 0.25);
    m_clock.advance(1125s);
    QCOMPARE(filled(), 1.0);
    m_clock.advance(1s);
    QCOMPARE(texts(), (QStringList{QStringLiteral("05:00"), QStringLiteral("Pomodoro"),
                                   QStringLiteral("BREAK")}));
    QCOMPARE(filled(), 0.0);
}

void PomodoroWidgetViewTest::dotsCountSessions()
{
    QStringList seen;
    for (int phase = 0; phase < 8; ++phase) {
        seen << dots();
        m_service->skip();
    }
    QCOMPARE(seen.join(QLatin1Char(' ')),
             QStringLiteral(".... O... O... OO.. OO.. OOO. OOO. ...."));
}

void PomodoroWidgetViewTest::dotsAreNoMoreThanFit()
{
    m_service->setSessionsBeforeLongBreak(0);
    QCOMPARE(dots(), QString());
    m_service->setSessionsBeforeLongBreak(1);
    QCOMPARE(dots(), QStringLiteral("."));
    m_service->setSessionsBeforeLongBreak(std::numeric_limits<qint64>::max());
    QCOMPARE(dots(), QStringLiteral("......")); // up to the buttons
    m_view->resize(40, 90);
    QTRY_COMPARE(dots(), QString());
}

void PomodoroWidgetViewTest::digitsStandStill()
{
    const auto places = [this] {
        QList<double> places;
        for (const QQuickItem *text : items("NotchText")) {
            if (text->property("text").toString().size() == 1) {
                places << text->mapToScene({0, 0}).x() << text->width();
            }
        }
        return places;
    };
    m_service->setWorkMinutes(11);
    m_service->start();
    m_clock.advance(49s);
    QCOMPARE(texts().constFirst(), QStringLiteral("10:11"));
    const QList<double> before = places();
    QCOMPARE(before.size(), 10);
    m_clock.advance(3s);
    QCOMPARE(texts().constFirst(), QStringLiteral("10:08"));
    QCOMPARE(places(), before);
}

void PomodoroWidgetViewTest::buttonsDriveTheService()
{
    press(QStringLiteral("Start"));
    QCOMPARE(m_service->isRunning(), true);
    m_clock.advance(5s);
    press(QStringLiteral("Pause"));
    QCOMPARE(m_service->isRunning(), false);
    QCOMPARE(m_service->secondsRemaining(), 1495);
    press(QStringLiteral("Skip"));
    QCOMPARE(m_service->phase(), PomodoroPhase::shortBreak);
    press(QStringLiteral("Start"));
    press(QStringLiteral("Reset"));
    QCOMPARE(m_service->phase(), PomodoroPhase::work);
    QCOMPARE(m_service->isRunning(), false);
    QCOMPARE(m_service->sessionsCompleted(), 0);

    // Those who do not see the symbols are told what they do.
    QAccessible::setActive(true);
    for (QQuickItem *button : items("SymbolButton")) {
        QAccessibleInterface *told = QAccessible::queryAccessibleInterface(button);
        QVERIFY(told);
        QCOMPARE(told->role(), QAccessible::Button);
        QCOMPARE(told->text(QAccessible::Name), button->property("description").toString());
    }
}

QTEST_MAIN(PomodoroWidgetViewTest)
#include "PomodoroWidgetViewTest.moc"
