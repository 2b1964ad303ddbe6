#pragma once

#include "config/OverlayController.h"

#include <QStringList>

#include <vector>

namespace velmora
{

/// Makes overlays that only tell what is done with them. Has to outlive them.
class FakeOverlays
{
public:
    QStringList events;               ///< "make", "show", "close", "free" and the screen's name
    std::vector<NotchSettings> built; ///< the snapshots, in the order in which they were handed in

    [[nodiscard]] OverlayControllerFactory factory()
    {
        return [this](const std::shared_ptr<Screen> &screen, const NotchSettings &settings,
                      NotchServices &) {
            built.push_back(settings);
            return std::make_unique<Controller>(events, screen->localizedName());
        };
    }

    /// What happened since the last call.
    [[nodiscard]] QStringList takeEvents() { return std::exchange(events, {}); }

private:
    class Controller final : public OverlayController
    {
    public:
        Controller(QStringList &events, const QString &name)
            : m_events(events)
            , m_name(name)
        {
            tell(QStringLiteral("make "));
        }
        ~Controller() override { tell(QStringLiteral("free ")); }
        void showWindow() override { tell(QStringLiteral("show ")); }
        void close() override { tell(QStringLiteral("close ")); }

    private:
        void tell(const QString &event) { m_events << event + m_name; }

        QStringList &m_events;
        QString m_name;
    };
};

} // namespace velmora
