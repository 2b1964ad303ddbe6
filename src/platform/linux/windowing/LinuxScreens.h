#pragma once

#include "platform/Screens.h"

#include <memory>
#include <vector>

namespace velmora
{

class LinuxScreen;
class RandrWatch;

/// The screens that QGuiApplication knows, without the stand-in that it makes up while no output
/// is connected.
class LinuxScreens final : public Screens
{
    Q_OBJECT

public:
    LinuxScreens();
    ~LinuxScreens() override;
    Q_DISABLE_COPY_MOVE(LinuxScreens)

    [[nodiscard]] std::vector<std::shared_ptr<Screen>> all() const override;

private:
    void add(QScreen *screen);
    void remove(QScreen *screen);
    void announceLater();
    void announce();

    /// What makes a difference to the outside: who is there, in which order, where, at which scale.
    struct State {
        const QScreen *screen = nullptr;
        QRectF frame;
        qreal scale = 1;
        bool operator==(const State &) const = default;
    };
    [[nodiscard]] std::vector<State> state() const;

    std::vector<std::shared_ptr<LinuxScreen>> m_screens;
    std::vector<State> m_announced;
    bool m_announcing = false;
    std::unique_ptr<RandrWatch> m_outputs; ///< on X11 only
};

} // namespace velmora
