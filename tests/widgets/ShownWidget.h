#pragma once

#include "config/NotchServices.h"
#include "support/FakePlatform.h"
#include "support/QmlItems.h"
#include "support/QmlWarnings.h"
#include "widgets/WidgetViews.h"

#include <QAccessible>
#include <QQmlEngine>
#include <QQuickView>
#include <QTest>
#include <QtQml/qqmlextensionplugin.h>

#include <algorithm>

Q_IMPORT_QML_PLUGIN(Velmora_ConfigPlugin)
Q_IMPORT_QML_PLUGIN(Velmora_DropPlugin)
Q_IMPORT_QML_PLUGIN(Velmora_MediaPlugin)
Q_IMPORT_QML_PLUGIN(Velmora_ServicesPlugin)
Q_IMPORT_QML_PLUGIN(Velmora_StylePlugin)
Q_IMPORT_QML_PLUGIN(Velmora_WidgetsPlugin)

namespace velmora
{

/// A widget in a window of its own, fed by a machine of doubles.
struct ShownWidget {
    QmlWarnings warnings;
    FakePlatform platform;
    VirtualClock &clock = platform.clock;
    NotchServices services{platform.roles};
    QQuickView view;

    ShownWidget(const char *type, int width)
    {
        const QString name = QString::fromLatin1(type);
        view.engine()->addImportPath(QStringLiteral("qrc:/qt/qml"));
        view.setColor(Qt::black);
        view.setResizeMode(QQuickView::SizeRootObjectToView);
        view.resize(width, 90);
        view.setInitialProperties(WidgetViews::inputs(name, &services));
        view.setSource(WidgetViews::source(name));
        view.show();
        if (!QTest::qWaitForWindowExposed(&view)) {
            qFatal("the window does not come");
        }
    }

    /// Ends the view and looks for what it has complained of.
    void end()
    {
        view.setSource({});
        QCOMPARE(warnings.list(), QStringList());
    }

    [[nodiscard]] QList<QQuickItem *> items(const char *type) const
    {
        return qmlItems(*view.contentItem(), type);
    }

    /// What the items of a type say, in the order of the tree.
    [[nodiscard]] QStringList texts(const char *type) const
    {
        QStringList texts;
        for (const QQuickItem *item : items(type)) {
            texts << item->property("text").toString();
        }
        return texts;
    }

    [[nodiscard]] static QRectF place(const QQuickItem &item)
    {
        return item.mapRectToScene(item.boundingRect());
    }

    /// Presses each button in turn, by a corner that a finger may find: by their descriptions,
    /// which those hear who do not see the symbols.
    void press(const QStringList &descriptions)
    {
        for (const QString &wanted : descriptions) {
            const auto buttons = items("SymbolButton");
            const auto found = std::find_if(buttons.begin(), buttons.end(), [&](auto *button) {
                return QAccessible::queryAccessibleInterface(button)->text(QAccessible::Name) ==
                       wanted;
            });
            QVERIFY2(found != buttons.end(), qPrintable(wanted));
            const QRectF area = place(**found);
            QVERIFY(area.width() >= 28 && area.height() >= 24);
            QTest::mouseClick(&view, Qt::LeftButton, {},
                              (area.topLeft() + QPointF(1, 1)).toPoint());
        }
    }

    /// The symbols of buttons that are not under the pointer are so white; the one that is, is
    /// more.
    void checkHover(float opacity)
    {
        const auto buttons = items("SymbolButton");
        const auto white = [](const QQuickItem &button) {
            return qmlItems(button, "velmora::Symbol").front()->property("color").value<QColor>();
        };
        for (const QQuickItem *button : buttons) {
            QTest::mouseMove(&view, place(*button).center().toPoint());
            for (const QQuickItem *each : buttons) {
                QCOMPARE(white(*each), QColor::fromRgbF(1, 1, 1, each == button ? 1 : opacity));
            }
        }
    }
};

} // namespace velmora
