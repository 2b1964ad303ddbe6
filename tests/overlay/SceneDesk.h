#pragma once

#include "overlay/CollapsedLiveStrip.h"
#include "overlay/OverlayScene.h"
#include "support/FakeDesk.h"
#include "support/QmlItems.h"
#include "support/QmlWarnings.h"

#include <QTest>

namespace velmora
{

/// Overlays with their views on a screen of 800 × 600, and a menu of five lines.
struct SceneDesk : NoQmlWarnings, FakeDesk {
    SceneDesk()
    {
        const auto item = [this](const QString &title) {
            MenuItem item;
            item.title = title;
            item.keyEquivalent = QStringLiteral("n");
            item.action = [this, title] { pressed << title; };
            return item;
        };
        MenuItem profile;
        profile.kind = MenuItem::Kind::Submenu;
        profile.title = QStringLiteral("Profile");
        for (int i = 0; i < 30; ++i) {
            profile.submenu.push_back(item(QString::number(i)));
        }
        menu.setMenu({item(QStringLiteral("enable")), item(QStringLiteral("a")),
                      item(QStringLiteral("b")), item(QStringLiteral("c")), profile});
    }

    /// An overlay on show, collapsed.
    Controller overlay(const NotchSettings &settings = {})
    {
        auto controller =
            makeController(screen, settings, [this](NotchWindow &filled, auto &owner) {
                window = &filled;
                scene.populate(filled, owner);
            });
        window->setGeometry(shell.bounds);
        window->show();
        if (!QTest::qWaitForWindowExposed(window)) {
            qFatal("the window does not come");
        }
        return controller;
    }

    /// The same, expanded.
    Controller panel(const NotchSettings &settings = {})
    {
        auto controller = overlay(settings);
        controller->mouseEntered({400, 10});
        clock.advance(std::chrono::milliseconds(300));
        return controller;
    }

    void leave(NotchWindowController &overlay)
    {
        overlay.mouseExited();
        clock.advance(std::chrono::milliseconds(310));
    }

    void click(const QPointF &place, Qt::MouseButton button = Qt::LeftButton) const
    {
        QTest::mouseClick(window, button, {}, place.toPoint());
    }

    void play(const QString &title, const QString &artist = QStringLiteral("Them"))
    {
        services.mediaService()->refresh();
        platform.media.answer(playingTrack(title, artist));
    }

    [[nodiscard]] CollapsedLiveStrip &strip() const
    {
        return *items("CollapsedLiveStripView").front()->findChild<CollapsedLiveStrip *>();
    }

    [[nodiscard]] QList<QQuickItem *> items(const char *type) const
    {
        return qmlItems(*window->contentItem(), type);
    }

    QStringList pressed;
    StatusMenu menu{clock};
    std::shared_ptr<FakeScreen> screen = screens.add({100, 200, 800, 600}); // not under the pointer
    OverlayScene scene{menu};
    NotchWindow *window = nullptr;
};

} // namespace velmora
