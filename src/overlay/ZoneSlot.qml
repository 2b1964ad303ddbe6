import QtQuick
import Velmora.Config
import Velmora.Widgets

// Shows the widget of a type, by its stored name. A type without a view is an empty zone.
Loader {
    required property string type
    required property NotchServices services

    Component.onCompleted: setSource(WidgetViews.source(type), WidgetViews.inputs(type, services))
}
