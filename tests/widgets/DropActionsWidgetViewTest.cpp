#include "widgets/ShownWidget.h"

#include <optional>

using namespace velmora;
using namespace Qt::StringLiterals;
using enum DropActionID;

class DropActionsWidgetViewTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_shown.emplace("dropActions", 150); }
    void cleanup()
    {
        m_shown->end();
        m_shown.reset();
    }

    void theDefault();
    void nothingEnabled();
    void allInANarrowZone();
    void manyColumnsInAWideZone();

private:
    [[nodiscard]] DropActionsService &service() { return *m_shown->services.dropService(); }
    [[nodiscard]] QStringList texts() const { return m_shown->texts("QQuickText"); }
    [[nodiscard]] QList<QRectF> tiles() const;
    void enableAll(int width, double y);

    std::optional<ShownWidget> m_shown;
};

/// The coloured squares.
QList<QRectF> DropActionsWidgetViewTest::tiles() const
{
    QList<QRectF> tiles;
    for (const QQuickItem *square : m_shown->items("velmora::RoundedRectangle")) {
        tiles << ShownWidget::place(*square);
    }
    return tiles;
}

void DropActionsWidgetViewTest::enableAll(int width, double y)
{
    service().setEnabledActions({allDropActions().begin(), allDropActions().end()});
    m_shown->view.resize(width, 90);
    QTRY_COMPARE(m_shown->items("WidgetHeader").front()->mapToScene({}).y(), y);
}

void DropActionsWidgetViewTest::theDefault()
{
    const QStringList shown{u"Drop Actions"_s, u"3 enabled"_s, u"AirDrop"_s,
                            u"Zip"_s,          u"Unzip"_s,     u"Drag files onto the notch"_s};
    QCOMPARE(texts(), shown);
    QColor back = color(zip);
    back.setAlphaF(0.12F);
    QCOMPARE(m_shown->items("velmora::RoundedRectangle").at(1)->property("color").value<QColor>(),
             back);
}

void DropActionsWidgetViewTest::nothingEnabled()
{
    service().setEnabledActions({});
    QCOMPARE(texts(), QStringList({u"Drop Actions"_s, u"0 enabled"_s, u"No actions enabled"_s}));
    service().setEnabledActions({trash});
    QVERIFY(texts().contains(u"Trash"_s));
    QVERIFY(!texts().contains(u"No actions enabled"_s));
}

void DropActionsWidgetViewTest::allInANarrowZone()
{
    enableAll(150, 0); // what has no room is below, not the header
    const auto squares = tiles();
    QCOMPARE(squares.size(), 11);
    for (int i = 0; i < squares.size(); ++i) {
        QCOMPARE(squares.at(i).x(), squares.at(i % 4).x()); // four columns
        QCOMPARE(squares.at(i).size(), QSizeF(22, 22));
    }
    QVERIFY(texts().contains(u"11 enabled"_s));
}

void DropActionsWidgetViewTest::manyColumnsInAWideZone()
{
    enableAll(420, 10); // 400 for the grid: 11 columns of 28 and 10 spaces are 368
    QCOMPARE(tiles().last().y(), tiles().first().y());
}

QTEST_MAIN(DropActionsWidgetViewTest)
#include "DropActionsWidgetViewTest.moc"
