import QtQuick
import Velmora.Config

// Turns the type of a widget, by its stored name, into its view. A type without a view is an empty
// zone.
Loader {
    id: slot

    required property string type
    required property NotchServices services

    Component.onCompleted: {
        switch (type) {
        case "clock":
            setSource("../Widgets/ClockWidgetView.qml", {
                "clock": services.clock
            });
            break;
        case "pomodoro":
            setSource("../Widgets/PomodoroWidgetView.qml", {
                "service": services.pomodoroService
            });
            break;
        case "media":
            setSource("../Widgets/NowPlayingMediaView.qml", {
                "clock": services.clock,
                "service": services.mediaService
            });
            break;
        case "dropActions":
            setSource("../Widgets/DropActionsWidgetView.qml", {
                "service": services.dropService,
                "minimumColumnWidth": 28,
                "columnSpacing": 6
            });
            break;
        case "systemMonitor":
            setSource("../Widgets/SystemMonitorWidgetView.qml", {
                "monitor": services.systemMonitor
            });
            break;
        }
    }
}
