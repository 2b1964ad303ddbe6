#include "app/Application.h"
#include "platform/linux/windowing/Windowing.h"

#include <QGuiApplication>

int main(int argc, char *argv[])
{
    // What is drawn with, and where, is decided before the application object looks for itself.
    velmora::chooseWindowSystem();
    QCoreApplication::setApplicationName(QStringLiteral("velmora"));
    QGuiApplication::setApplicationDisplayName(QStringLiteral("Velmora"));
    QGuiApplication::setDesktopFileName(QStringLiteral("com.velmora.app"));
    const QGuiApplication application(argc, argv);
    QGuiApplication::setQuitOnLastWindowClosed(false);
    return velmora::runApplication();
}
