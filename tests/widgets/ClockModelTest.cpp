#include "widgets/ClockModel.h"

#include "support/VirtualClock.h"

#include <QScopeGuard>
#include <QSignalSpy>
#include <QTest>

using namespace velmora;
using namespace std::chrono_literals;

namespace
{

QDateTime at(const QString &iso)
{
    return QDateTime::fromString(iso, Qt::ISODateWithMs);
}

} // namespace

class ClockModelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void texts_data();
    void texts();
    void minutesTurnWhenTheyTurn();
    void tellsOfChangesOnly();
    void stopsWithItsOwner();
};

void ClockModelTest::texts_data()
{
    QTest::addColumn<QString>("locale");
    QTest::addColumn<QString>("now");
    QTest::addColumn<QString>("time");
    QTest::addColumn<QString>("date");
    const auto row = [](const char *name, const char *locale, const char *now, const char *time,
                        const char *date) {
        QTest::newRow(name) << QString::fromLatin1(locale) << QString::fromLatin1(now)
                            << QString::fromLatin1(time) << QString::fromUtf8(date);
    };
    row("two digits", "en_US", "2024-05-05T09:07:03.000", "09:07", "Sun, May 5");
    row("24 hours, whatever the locale", "en_US", "2024-12-31T23:59:59.999", "23:59",
        "Tue, Dec 31");
    row("midnight", "en_GB", "2024-02-29T00:00:00.000", "00:00", "Thu, Feb 29");
    row("names of the locale", "de_DE", "2024-05-15T13:05:00.000", "13:05", "Mi., Mai 15");
    row("names beyond Latin", "ja_JP", "2024-05-15T13:05:00.000", "13:05", "水, 5月 15");
    row("C", "C", "2024-05-15T13:05:00.000", "13:05", "Wed, May 15");
}

void ClockModelTest::texts()
{
    QFETCH(const QString, locale);
    QFETCH(const QString, now);
    const auto restore = qScopeGuard([former = QLocale()] { QLocale::setDefault(former); });
    QLocale::setDefault(QLocale(locale));
    VirtualClock clock;
    clock.setNow(at(now));
    ClockModel model;
    QCOMPARE(model.time(), QString()); // no clock yet
    model.setClock(&clock);
    QTEST(model.time(), "time");
    QTEST(model.date(), "date");
}

void ClockModelTest::minutesTurnWhenTheyTurn()
{
    // A model that is made within a second must not lag behind by that part of one.
    VirtualClock clock;
    clock.setNow(at(QStringLiteral("2024-05-15T23:58:59.400")));
    ClockModel model;
    model.setClock(&clock);
    clock.advance(599ms);
    QCOMPARE(model.time(), QStringLiteral("23:58"));
    clock.advance(1ms);
    QCOMPARE(model.time(), QStringLiteral("23:59"));
    const QString before = model.date();
    clock.advance(59'999ms);
    QCOMPARE(model.time(), QStringLiteral("23:59"));
    QCOMPARE(model.date(), before);
    clock.advance(1ms);
    QCOMPARE(model.time(), QStringLiteral("00:00"));
    QVERIFY(model.date() != before);
}

void ClockModelTest::tellsOfChangesOnly()
{
    VirtualClock clock;
    clock.setNow(at(QStringLiteral("2024-05-15T12:00:30.000")));
    ClockModel model;
    model.setClock(&clock);
    const QSignalSpy clocks(&model, &ClockModel::clockChanged);
    const QSignalSpy times(&model, &ClockModel::timeChanged);
    const QSignalSpy dates(&model, &ClockModel::dateChanged);
    clock.advance(29s);
    QVERIFY(times.isEmpty());
    clock.advance(10min);
    QCOMPARE(times.size(), 10);
    QVERIFY(dates.isEmpty());
    model.setClock(&clock);
    QVERIFY(clocks.isEmpty());
}

void ClockModelTest::stopsWithItsOwner()
{
    VirtualClock clock;
    auto model = std::make_unique<ClockModel>();
    model->setClock(&clock);
    QCOMPARE(clock.runningTimers(), 1);
    model->setClock(nullptr);
    QCOMPARE(clock.runningTimers(), 0);
    model->setClock(&clock);
    model.reset();
    QCOMPARE(clock.runningTimers(), 0);
    clock.advance(1min);
}

QTEST_GUILESS_MAIN(ClockModelTest)
#include "ClockModelTest.moc"
