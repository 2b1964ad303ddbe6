#include "config/NotchWidgetType.h"
#include "style/SymbolPath.h"

#include <QSet>
#include <QTest>

using namespace velmora;

class SymbolsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyNameHasAnOutlineInTheBox();
};

void SymbolsTest::everyNameHasAnOutlineInTheBox()
{
    const QStringList names = symbolNames();
    QVERIFY(names.size() > 60);
    const QRectF box = QRectF(0, 0, 24, 24).adjusted(-1, -1, 1, 1);
    QSet<QString> seen;
    QStringList faults;
    for (const QString &name : names) {
        const QRectF bounds = symbolPath(name).boundingRect();
        if (seen.contains(name) || !box.contains(bounds) ||
            qMax(bounds.width(), bounds.height()) < 8) {
            faults << QString::asprintf("%s: %.1f, %.1f, %.1f x %.1f", qPrintable(name), bounds.x(),
                                        bounds.y(), bounds.width(), bounds.height());
        }
        seen << name;
    }
    for (const NotchWidgetType type : allWidgetTypes()) {
        faults << (seen.contains(iconName(type)) ? QStringList() : QStringList(iconName(type)));
    }
    QVERIFY2(faults.isEmpty(), qPrintable(faults.join(QLatin1String("; "))));
}

QTEST_MAIN(SymbolsTest)
#include "SymbolsTest.moc"
