#include "widgets/ClockModel.h"

#include "support/VirtualClock.h"

#include <QLocale>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QTest>

using namespace velmora;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class ClockModelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void textsTurnWhenTheyTurn();
};

void ClockModelTest::textsTurnWhenTheyTurn()
{
    const auto restore = qScopeGuard([former = QLocale()] { QLocale::setDefault(former); });
    VirtualClock clock;
    ClockModel model;
    model.setProperty("clock", QVariant::fromValue<Clock *>(&clock));
    const auto text = [&] { return model.time() + u' ' + model.date(); };
    const std::pair<QString, QString> rows[]{{u"de_DE"_s, u"09:07 So., Mai 5"_s},
                                             {u"ja_JP"_s, u"09:07 日, 5月 5"_s},
                                             {u"en_US"_s, u"09:07 Sun, May 5"_s}};
    for (const auto &[locale, shown] : rows) {
        QLocale::setDefault(QLocale(locale));
        clock.setNow(QDateTime(QDate(2024, 5, 5), QTime(9, 7, 3)));
        model.componentComplete();
        QCOMPARE(text(), shown);
    }
    // A model that is made within a second must not lag behind by that part of one.
    clock.setNow(QDateTime(QDate(2024, 5, 5), QTime(23, 58, 59, 400)));
    model.componentComplete();
    const QSignalSpy changes(&model, &ClockModel::changed);
    clock.advance(599ms);
    QVERIFY(changes.isEmpty());
    clock.advance(1ms);
    QCOMPARE(text(), u"23:59 Sun, May 5"_s);
    clock.advance(59'999ms);
    QCOMPARE(changes.size(), 1);
    clock.advance(1ms);
    QCOMPARE(text(), u"00:00 Mon, May 6"_s);
    QCOMPARE(changes.size(), 2);
}

QTEST_GUILESS_MAIN(ClockModelTest)
#include "ClockModelTest.moc"
