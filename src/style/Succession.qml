import QtQuick
import Velmora.Style

// Shows one thing at a time. Another key is another thing, which takes the place of the one before.
Item {
    id: succession

    required property string key
    required property Component delegate // a Successor

    property Successor current: null

    function succeed() {
        const before = current;
        current = delegate.createObject(succession, {
            "arrives": before !== null
        }) as Successor;
        if (before) {
            before.leave();
        }
    }

    Component.onCompleted: succeed()
    onKeyChanged: {
        if (current) {
            succeed();
        }
    }
}
