#include "app/Application.h"
#include "platform/linux/windowing/Windowing.h"

#include <QGuiApplication>

#include <malloc.h>

namespace
{

/// What is freed of covers is given back to the system, instead of being kept, in pieces, for more.
/// Left to itself the allocator moves that limit up with the first large block that is freed.
void keepLargeBlocksApart()
{
    mallopt(M_MMAP_THRESHOLD, 128 * 1024);
}

} // namespace

int main(int argc, char *argv[])
{
    keepLargeBlocksApart();
    // What is drawn with, and where, is decided before the application object looks for itself.
    velmora::chooseWindowSystem();
    const auto proxy = velmora::sparePointerMotion();
    QCoreApplication::setApplicationName(QStringLiteral("velmora"));
    QGuiApplication::setApplicationDisplayName(QStringLiteral("Velmora"));
    QGuiApplication::setDesktopFileName(QStringLiteral("com.velmora.app"));
    const QGuiApplication application(argc, argv);
    QGuiApplication::setQuitOnLastWindowClosed(false);
    return velmora::runApplication(proxy);
}
