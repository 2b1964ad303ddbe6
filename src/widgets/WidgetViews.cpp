#include "widgets/WidgetViews.h"

#include "config/NotchWidgetType.h"

#include <algorithm>
#include <array>
#include <vector>

namespace velmora
{

namespace
{

/// A required property of a view, and the property of `NotchServices` that it takes its value from.
struct Input {
    const char *property;
    const char *service;
};

struct Widget {
    NotchWidgetType type;
    const char *view;
    std::vector<Input> inputs;
};

/// A new widget is a line here and its view.
const std::vector<Widget> &widgets()
{
    using enum NotchWidgetType;
    static const std::vector<Widget> all{
        {calendar, "CalendarWidgetView", {{"clock", "clock"}, {"service", "calendarService"}}},
        {clock, "ClockWidgetView", {{"clock", "clock"}}},
        {dropActions, "DropActionsWidgetView", {{"service", "dropService"}}},
        {media, "NowPlayingMediaView", {{"clock", "clock"}, {"service", "mediaService"}}},
        {pomodoro, "PomodoroWidgetView", {{"service", "pomodoroService"}}},
        {systemMonitor, "SystemMonitorWidgetView", {{"monitor", "systemMonitor"}}},
        {todo, "TodoWidgetView", {{"service", "todoService"}}},
    };
    return all;
}

const Widget *find(const QString &type)
{
    const auto found = std::find_if(widgets().begin(), widgets().end(), [&type](const auto &each) {
        return type == rawValue(each.type);
    });
    return found == widgets().end() ? nullptr : &*found;
}

} // namespace

QUrl WidgetViews::source(const QString &type)
{
    const Widget *widget = find(type);
    return widget == nullptr ? QUrl()
                             : QUrl(QStringLiteral("qrc:/qt/qml/Velmora/Widgets/%1.qml")
                                        .arg(QLatin1String(widget->view)));
}

QVariantMap WidgetViews::inputs(const QString &type, NotchServices *services)
{
    QVariantMap values;
    if (const Widget *widget = find(type)) {
        for (const auto &[property, service] : widget->inputs) {
            values.insert(QLatin1String(property), services->property(service));
        }
    }
    return values;
}

} // namespace velmora
