#include "support/FakeDropRoles.h"
#include "support/MemoryStore.h"
#include "support/QmlItems.h"
#include "support/QmlWarnings.h"

#include <QQmlEngine>
#include <QQuickView>
#include <QTest>
#include <QtQml/qqmlextensionplugin.h>

#include <optional>

Q_IMPORT_QML_PLUGIN(Velmora_ConfigPlugin)
Q_IMPORT_QML_PLUGIN(Velmora_DropPlugin)
Q_IMPORT_QML_PLUGIN(Velmora_MediaPlugin)
Q_IMPORT_QML_PLUGIN(Velmora_ServicesPlugin)
Q_IMPORT_QML_PLUGIN(Velmora_StylePlugin)
Q_IMPORT_QML_PLUGIN(Velmora_WidgetsPlugin)

using namespace velmora;
using enum DropActionID;

class DropActionsWidgetViewTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void theDefault();
    void nothingEnabled();
    void allInANarrowZone();
    void manyColumnsInAWideZone();

private:
    [[nodiscard]] QStringList texts() const;
    [[nodiscard]] QQuickItem *text(const QString &content) const;
    [[nodiscard]] QList<QQuickItem *> tiles() const;
    void resize(int width, int height);

    std::optional<QmlWarnings> m_warnings;
    MemoryStore m_store;
    FakeDropRoles m_roles;
    std::unique_ptr<DropActionsService> m_service;
    std::unique_ptr<QQuickView> m_view;
};

void DropActionsWidgetViewTest::init()
{
    m_warnings.emplace();
    m_store.values.clear();
    m_service = std::make_unique<DropActionsService>(m_store, m_roles.roles());
    m_view = std::make_unique<QQuickView>();
    m_view->engine()->addImportPath(QStringLiteral("qrc:/qt/qml"));
    m_view->setResizeMode(QQuickView::SizeRootObjectToView);
    m_view->setInitialProperties({{QStringLiteral("service"), QVariant::fromValue(m_service.get())},
                                  {QStringLiteral("minimumColumnWidth"), 28},
                                  {QStringLiteral("columnSpacing"), 6}});
    m_view->setSource(
        QUrl(QStringLiteral("qrc:/qt/qml/Velmora/Widgets/DropActionsWidgetView.qml")));
    resize(150, 90);
    m_view->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
}

void DropActionsWidgetViewTest::cleanup()
{
    m_view.reset();
    m_service.reset();
    const QStringList warnings = m_warnings->list();
    m_warnings.reset();
    QCOMPARE(warnings, QStringList());
}

QStringList DropActionsWidgetViewTest::texts() const
{
    QStringList texts;
    for (QQuickItem *item : qmlItems(*m_view->contentItem(), "QQuickText")) {
        texts << item->property("text").toString();
    }
    return texts;
}

QQuickItem *DropActionsWidgetViewTest::text(const QString &content) const
{
    for (QQuickItem *item : qmlItems(*m_view->contentItem(), "QQuickText")) {
        if (item->property("text").toString() == content) {
            return item;
        }
    }
    return nullptr;
}

/// The coloured squares.
QList<QQuickItem *> DropActionsWidgetViewTest::tiles() const
{
    return qmlItems(*m_view->contentItem(), "QQuickRectangle");
}

void DropActionsWidgetViewTest::resize(int width, int height)
{
    m_view->rootObject()->setSize(QSizeF(width, height));
    // Positioners place their children when the scene is polished.
    for (QQuickItem *item : qmlItems(*m_view->contentItem(), "QQuickBasePositioner")) {
        item->ensurePolished();
    }
}

void DropActionsWidgetViewTest::theDefault()
{
    const QStringList shown{
        QStringLiteral("Drop Actions"), QStringLiteral("3 enabled"),
        QStringLiteral("AirDrop"),      QStringLiteral("Zip"),
        QStringLiteral("Unzip"),        QStringLiteral("Drag files onto the notch")};
    QCOMPARE(texts(), shown);
    QCOMPARE(tiles().size(), 3);
    QColor back = color(zip);
    back.setAlphaF(0.12F);
    QCOMPARE(tiles().at(1)->property("color").value<QColor>(), back);
}

void DropActionsWidgetViewTest::nothingEnabled()
{
    m_service->setEnabledActions({});
    QCOMPARE(texts(), QStringList({QStringLiteral("Drop Actions"), QStringLiteral("0 enabled"),
                                   QStringLiteral("No actions enabled")}));
    m_service->setEnabledActions({trash});
    QVERIFY(texts().contains(QStringLiteral("Trash")));
    QVERIFY(!texts().contains(QStringLiteral("No actions enabled")));
}

void DropActionsWidgetViewTest::allInANarrowZone()
{
    m_service->setEnabledActions({allDropActions().begin(), allDropActions().end()});
    resize(150, 90);
    const auto squares = tiles();
    QCOMPARE(squares.size(), 11);
    for (int i = 0; i < squares.size(); ++i) {
        const QPointF place = squares.at(i)->mapToItem(m_view->rootObject(), QPointF());
        const QPointF above = squares.at(i % 4)->mapToItem(m_view->rootObject(), QPointF());
        QCOMPARE(place.x(), above.x()); // four columns
        QCOMPARE(squares.at(i)->size(), QSizeF(22, 22));
    }
    // What has no room is below, not the header.
    QCOMPARE(text(QStringLiteral("Drop Actions"))->mapToItem(m_view->rootObject(), QPointF()).y(),
             5);
    QVERIFY(text(QStringLiteral("11 enabled")));
}

void DropActionsWidgetViewTest::manyColumnsInAWideZone()
{
    m_service->setEnabledActions({allDropActions().begin(), allDropActions().end()});
    resize(420, 90); // 400 for the grid: 11 columns of 28 and 10 spaces are 368
    const auto squares = tiles();
    const qreal y = squares.first()->mapToItem(m_view->rootObject(), QPointF()).y();
    QCOMPARE(squares.last()->mapToItem(m_view->rootObject(), QPointF()).y(), y);
}

QTEST_MAIN(DropActionsWidgetViewTest)
#include "DropActionsWidgetViewTest.moc"
