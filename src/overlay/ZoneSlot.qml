import QtQuick
import Velmora.Config
import Velmora.Widgets

// Turns the type of a widget, by its stored name, into its view. A type without a view is an empty zone.
Loader {
    id: slot

    required property string type
    required property NotchServices services

    sourceComponent: {
        switch (type) {
        case "clock":
            return clockWidget;
        case "systemMonitor":
            return systemMonitorWidget;
        default:
            return null;
        }
    }

    Component {
        id: clockWidget

        ClockWidgetView {
            clock: slot.services.clock
        }
    }
    Component {
        id: systemMonitorWidget

        SystemMonitorWidgetView {
            monitor: slot.services.systemMonitor
        }
    }
}
