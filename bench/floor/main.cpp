#include <QGuiApplication>
#include <QQmlApplicationEngine>

namespace
{

void setUnlessSet(const char *name, const char *value)
{
    if (!qEnvironmentVariableIsSet(name))
        qputenv(name, value);
}

} // namespace

/// The floor that the program is measured against: the same toolkit, the same way of drawing, and
/// nothing else.
int main(int argc, char *argv[])
{
    setUnlessSet("QT_QUICK_BACKEND", "software");
    setUnlessSet("QSG_RENDER_LOOP", "basic");
    if (qEnvironmentVariableIsSet("WAYLAND_DISPLAY"))
        setUnlessSet("QT_WAYLAND_CLIENT_BUFFER_INTEGRATION", "none");

    QGuiApplication application(argc, argv);
    QGuiApplication::setDesktopFileName(QStringLiteral("velmora_floor"));
    QQmlApplicationEngine engine;
    engine.load(QUrl(QStringLiteral("qrc:/qt/qml/VelmoraFloor/floor/Floor.qml")));
    return engine.rootObjects().isEmpty() ? 1 : QGuiApplication::exec();
}
