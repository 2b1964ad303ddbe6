#include "widgets/ShownWidget.h"

using namespace velmora;
using namespace Qt::StringLiterals;

class DropActionsWidgetViewTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void showsWhatIsEnabled();
};

void DropActionsWidgetViewTest::showsWhatIsEnabled()
{
    ShownWidget shown("dropActions", 150);
    DropActionsService &service = *shown.services.dropService();
    const auto texts = [&] { return shown.texts("QQuickText").join(u';'); };
    const auto squares = [&] { return shown.items("velmora::RoundedRectangle"); };
    QCOMPARE(texts(), u"Drop Actions;3 enabled;AirDrop;Zip;Unzip;Drag files onto the notch"_s);
    QColor back = color(DropActionID::zip);
    back.setAlphaF(0.12F);
    QCOMPARE(squares().at(1)->property("color").value<QColor>(), back);
    service.setEnabledActions({});
    QCOMPARE(texts(), u"Drop Actions;0 enabled;No actions enabled"_s);

    service.setEnabledActions({allDropActions().begin(), allDropActions().end()});
    const auto headerY = [&] { return shown.items("WidgetHeader").front()->mapToScene({}).y(); };
    QTRY_COMPARE(headerY(), 0.0); // what has no room is below, not the header
    const auto tiles = squares();
    QCOMPARE(tiles.size(), 11);
    for (int i = 0; i < tiles.size(); ++i) {
        QCOMPARE(ShownWidget::place(*tiles.at(i)).size(), QSizeF(22, 22));
        QCOMPARE(tiles.at(i)->mapToScene({}).x(), tiles.at(i % 4)->mapToScene({}).x()); // columns
    }
    shown.view.resize(420, 90); // 400 for the grid: 11 columns of 28 and 10 spaces are 368
    QTRY_COMPARE(headerY(), 10.0);
    QCOMPARE(squares().last()->mapToScene({}).y(), squares().first()->mapToScene({}).y());
    shown.end();
}

QTEST_MAIN(DropActionsWidgetViewTest)
#include "DropActionsWidgetViewTest.moc"
