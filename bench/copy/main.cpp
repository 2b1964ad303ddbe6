// Copies items as a drop does and tells how long that took: velmora_copy ITEM… FOLDER
#include "drop/FileNaming.h"
#include "platform/LocalPath.h"
#include "platform/linux/files/LinuxFileActions.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cstdio>

using namespace std::chrono_literals;

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    if (argc < 3) {
        std::fprintf(stderr, "usage: velmora_copy ITEM... FOLDER\n");
        return 2;
    }
    QList<QUrl> items;
    for (int i = 1; i < argc - 1; ++i) {
        items << velmora::fileUrl(argv[i]);
    }
    velmora::LinuxFileActions actions;
    QElapsedTimer clock;
    QElapsedTimer sinceTick;
    qint64 longest = 0;
    QTimer tick;
    tick.setTimerType(Qt::PreciseTimer);
    QObject::connect(&tick, &QTimer::timeout, [&] {
        longest = std::max(longest, sinceTick.nsecsElapsed());
        sinceTick.start();
    });
    int status = 0;
    QTimer::singleShot(0, [&] {
        sinceTick.start();
        tick.start(5ms);
        clock.start();
        actions.copyItems(items, velmora::fileUrl(argv[argc - 1]), velmora::uniqueURL,
                          [&](const std::optional<QString> &error) {
                              const double ms = static_cast<double>(clock.nsecsElapsed()) / 1e6;
                              if (error) {
                                  std::fprintf(stderr, "%s\n", qPrintable(*error));
                                  status = 1;
                              }
                              std::printf("{\"ms\": %.2f, \"held_up_ms\": %.2f}\n", ms,
                                          static_cast<double>(longest) / 1e6);
                              QCoreApplication::quit();
                          });
    });
    QCoreApplication::exec();
    return status;
}
