#pragma once

#include "overlay/NotchWindow.h"
#include "overlay/NotchWindowController.h"
#include "platform/Clock.h"

#include <QObject>
#include <QPointer>
#include <QQmlComponent>
#include <QQmlIncubationController>
#include <QQmlIncubator>

namespace velmora
{

/// Has the first drag cost no more than later ones: some time after the start, what a drag shows is
/// built once out of sight and dropped again. By then the fonts are known, and the view and what it
/// is made of are loaded. No step holds up the main loop for more than a frame; what can take
/// longer happens beside it. (The panel could be had the same way, for another 4 MB of an idle
/// program; its first opening is slower in a later frame only, and gains from the fonts as well.)
class OverlayWarmUp final : public QObject, private QQmlIncubationController, private QQmlIncubator
{
    Q_OBJECT

public:
    /// Both outlive this.
    OverlayWarmUp(QQmlEngine &engine, Clock &clock);
    ~OverlayWarmUp() override;

    /// The view is built for the last overlay that is told here; one that goes takes it along, and
    /// it is built for the next.
    void useFor(NotchWindow &window, NotchWindowController &controller);

    [[nodiscard]] bool isFinished() const { return m_isFinished; }

private:
    void incubatingObjectCountChanged(int count) override;
    void setInitialState(QObject *view) override;
    void statusChanged(Status status) override;
    void findFonts();
    void loadView();
    void buildView();
    void dropView();

    QQmlEngine &m_engine;
    Clock &m_clock;
    QPointer<NotchWindow> m_window;
    QPointer<NotchWindowController> m_controller;
    bool m_isFinished = false;
    std::unique_ptr<QQmlComponent> m_component;
    QPointer<QObject> m_view; ///< once it is begun
    TimerHandle m_step;
};

} // namespace velmora
