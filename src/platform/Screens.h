#pragma once

#include <QObject>
#include <QRectF>
#include <QString>

#include <memory>
#include <vector>

class QScreen;

namespace velmora
{

/// One screen that is plugged in. Whoever keeps one for longer than a call keeps it weakly: it dies
/// with the screen.
class Screen
{
public:
    Screen() = default;
    Screen(const Screen &) = delete;
    Screen &operator=(const Screen &) = delete;
    virtual ~Screen() = default;

    [[nodiscard]] virtual QString localizedName() const = 0;

    /// The whole screen in global coordinates, in points, origin at the top left of the desktop.
    [[nodiscard]] virtual QRectF frame() const = 0;

    /// The toolkit's screen; null in tests that need no window.
    [[nodiscard]] virtual QScreen *handle() const = 0;
};

/// The screens of the desktop.
class Screens : public QObject
{
    Q_OBJECT

public:
    /// Primary screen first. Empty while no output is connected.
    [[nodiscard]] virtual std::vector<std::shared_ptr<Screen>> all() const = 0;

Q_SIGNALS:
    /// A screen came, went, moved, or changed its size or scale. Sent within the removal itself, so
    /// that no window outlives its screen; additions and changes are gathered for one loop turn.
    void changed();
};

} // namespace velmora
