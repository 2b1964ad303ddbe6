#pragma once

#include "platform/Screens.h"

#include <algorithm>
#include <utility>

namespace velmora
{

/// A screen that is only said to be there. Change its frame through `FakeScreens::setFrame` to have
/// the change reported, or directly to leave it unreported.
class FakeScreen final : public Screen
{
public:
    explicit FakeScreen(const QRectF &screenFrame = QRectF(0, 0, 1920, 1080),
                        QString screenName = QStringLiteral("Fake"), QScreen *screen = nullptr)
        : rect(screenFrame)
        , name(std::move(screenName))
        , qtScreen(screen)
    {
    }

    QRectF rect;
    QString name;
    QScreen *qtScreen = nullptr;

    [[nodiscard]] QString localizedName() const override { return name; }
    [[nodiscard]] QRectF frame() const override { return rect; }
    [[nodiscard]] QScreen *handle() const override { return qtScreen; }
};

/// Screens that a test plugs in and out. Every change is reported at once unless `Report::No`.
class FakeScreens final : public Screens
{
public:
    enum class Report { Yes, No };

    [[nodiscard]] std::vector<std::shared_ptr<Screen>> all() const override
    {
        return {m_screens.begin(), m_screens.end()};
    }

    /// Plugs in a screen, at the end of the list.
    std::shared_ptr<FakeScreen> add(const QRectF &frame = QRectF(0, 0, 1920, 1080),
                                    const QString &name = QStringLiteral("Fake"),
                                    QScreen *handle = nullptr, Report report = Report::Yes)
    {
        m_screens.push_back(std::make_shared<FakeScreen>(frame, name, handle));
        const auto screen = m_screens.back();
        sendChanged(report);
        return screen;
    }

    /// Unplugs it; it dies as soon as nobody else holds it.
    void remove(const Screen *screen, Report report = Report::Yes)
    {
        std::erase_if(m_screens, [screen](const auto &entry) { return entry.get() == screen; });
        sendChanged(report);
    }

    void setFrame(FakeScreen &screen, const QRectF &frame)
    {
        screen.rect = frame;
        sendChanged(Report::Yes);
    }

private:
    void sendChanged(Report report)
    {
        if (report == Report::Yes) {
            Q_EMIT changed();
        }
    }

    std::vector<std::shared_ptr<FakeScreen>> m_screens;
};

} // namespace velmora
