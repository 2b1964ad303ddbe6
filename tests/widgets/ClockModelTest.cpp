#include "widgets/ClockModel.h"

#include "support/VirtualClock.h"

#include <QLocale>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QTest>

using namespace velmora;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

struct Rig {
    VirtualClock clock;
    ClockModel model;

    explicit Rig(const QString &now)
    {
        clock.setNow(QDateTime::fromString(now, Qt::ISODateWithMs));
        model.setProperty("clock", QVariant::fromValue<Clock *>(&clock));
        model.componentComplete();
    }
};

} // namespace

class ClockModelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void texts();
    void minutesTurnWhenTheyTurn();
};

void ClockModelTest::texts()
{
    const auto restore = qScopeGuard([former = QLocale()] { QLocale::setDefault(former); });
    const auto textAt = [](const QString &now, const QString &locale) {
        QLocale::setDefault(QLocale(locale));
        const Rig rig(now);
        return rig.model.time() + u' ' + rig.model.date();
    };
    QCOMPARE(textAt(u"2024-05-05T09:07:03"_s, u"en_US"_s), u"09:07 Sun, May 5"_s);
    QCOMPARE(textAt(u"2024-12-31T23:59:59.999"_s, u"en_US"_s), u"23:59 Tue, Dec 31"_s);
    QCOMPARE(textAt(u"2024-02-29T00:00:00"_s, u"en_GB"_s), u"00:00 Thu, Feb 29"_s);
    QCOMPARE(textAt(u"2024-05-15T13:05:00"_s, u"de_DE"_s), u"13:05 Mi., Mai 15"_s);
    QCOMPARE(textAt(u"2024-05-15T13:05:00"_s, u"ja_JP"_s), u"13:05 水, 5月 15"_s);
}

void ClockModelTest::minutesTurnWhenTheyTurn()
{
    // A model that is made within a second must not lag behind by that part of one.
    Rig rig(u"2024-05-15T23:58:59.400"_s);
    rig.clock.advance(599ms);
    QCOMPARE(rig.model.time(), u"23:58"_s);
    rig.clock.advance(1ms);
    QCOMPARE(rig.model.time(), u"23:59"_s);
    const QString before = rig.model.date();
    const QSignalSpy changes(&rig.model, &ClockModel::changed);
    rig.clock.advance(59'999ms);
    QVERIFY(changes.isEmpty());
    rig.clock.advance(1ms);
    QCOMPARE(rig.model.time(), u"00:00"_s);
    QVERIFY(rig.model.date() != before);
    QCOMPARE(changes.size(), 1);
}

QTEST_GUILESS_MAIN(ClockModelTest)
#include "ClockModelTest.moc"
