/// velmora_soak [--quick]
///
/// Rebuilds the overlay, hovers, and plugs screens, in one process and many times over, and prints
/// what that took and what it left behind: one JSON object a line. Growth is counted from after the
/// first tenth of the cycles, when caches are filled. Needs an X server of its own.
#include "platform/linux/windowing/Windowing.h"
#include "soak/Ledger.h"
#include "soak/Rig.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cstdio>
#include <cstdlib>
#include <functional>

namespace
{

using namespace velmora::bench;
using namespace std::chrono_literals;

void print(const QJsonObject &values)
{
    std::printf("%s\n", QJsonDocument(values).toJson(QJsonDocument::Compact).constData());
    std::fflush(stdout);
}

[[noreturn]] void giveUp(const char *reason)
{
    std::fprintf(stderr, "velmora_soak: %s\n", reason);
    std::exit(1);
}

void require(bool succeeded, const char *what)
{
    if (!succeeded)
        giveUp(what);
}

/// Which classes have more objects than before, and how many more.
QJsonObject growth(const QMap<QByteArray, int> &before, const QMap<QByteArray, int> &after)
{
    QJsonObject grown;
    for (auto it = after.begin(); it != after.end(); ++it) {
        if (const int more = it.value() - before.value(it.key()); more != 0)
            grown.insert(QString::fromLatin1(it.key()), more);
    }
    return grown;
}

/// Runs a cycle many times over and prints what stays behind.
void repeat(Rig &rig, const char *name, int count, const std::function<void()> &cycle)
{
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < count / 10; ++i)
        cycle();
    rig.tidy();
    const Holdings before = holdings();
    for (int i = count / 10; i < count; ++i)
        cycle();
    rig.tidy();
    const Holdings after = holdings();
    print({{QLatin1String(name),
            QJsonObject{{QStringLiteral("cycles"), count},
                        {QStringLiteral("seconds"), static_cast<double>(timer.elapsed()) / 1000},
                        {QStringLiteral("megabytes"), after.megabytes - before.megabytes},
                        {QStringLiteral("megabytes_total"), after.megabytes},
                        {QStringLiteral("objects"), growth(before.objects, after.objects)},
                        {QStringLiteral("windows"), after.windows - before.windows},
                        {QStringLiteral("files"), after.files - before.files}}}});
}

void measureApply(Rig &rig, int count)
{
    QJsonObject perScreen;
    for (const int screens : {1, 2, 4}) {
        require(rig.setScreens(screens), "the program does not follow the screens");
        QJsonArray times;
        for (int i = 0; i < count; ++i) {
            rig.pass(100ms);
            require(rig.draw(), "the overlay is not drawn");
            QElapsedTimer timer;
            timer.start();
            rig.manager().apply();
            times.append(static_cast<double>(timer.nsecsElapsed()) / 1e6 / screens);
        }
        perScreen.insert(QString::number(screens), times);
    }
    print({{QStringLiteral("apply_ms_per_screen"), perScreen}});
    require(rig.setScreens(1), "the program does not follow the screens");
}

void hoverOnce(Rig &rig)
{
    auto *controller =
        static_cast<velmora::NotchWindowController *>(rig.manager().controllers().front().get());
    rig.enter();
    rig.pass(600ms); // the views' springs end later than the frame
    require(controller->isExpanded(), "the notch does not expand");
    require(rig.draw(), "the panel is not drawn");
    rig.leave();
    rig.pass(1000ms);
    require(!controller->isExpanded(), "the notch does not collapse");
    require(rig.draw(), "the notch is not drawn");
}

void plugOnce(Rig &rig)
{
    require(rig.setScreens(2), "a new screen gets no overlay");
    rig.pass(50ms);
    require(rig.setScreens(1), "the overlay of a screen that is gone stays");
    rig.pass(50ms);
}

} // namespace

int main(int argc, char *argv[])
{
    startCounting();
    velmora::chooseWindowSystem();
    QCoreApplication::setApplicationName(QStringLiteral("velmora"));
    const QGuiApplication application(argc, argv);
    QGuiApplication::setQuitOnLastWindowClosed(false);
    if (QGuiApplication::platformName() != u"xcb")
        giveUp("screens can be plugged on X11 only");
    const bool quick = QCoreApplication::arguments().contains(QStringLiteral("--quick"));

    Rig rig;
    require(rig.draw(), "the overlay is not drawn");
    measureApply(rig, quick ? 5 : 30);
    repeat(rig, "apply", quick ? 50 : 500, [&rig] {
        rig.manager().apply();
        rig.pass(32ms);
    });
    repeat(rig, "hover", quick ? 100 : 2000, [&rig] { hoverOnce(rig); });
    repeat(rig, "plug", quick ? 10 : 100, [&rig] { plugOnce(rig); });
    print({{QStringLiteral("warnings"), warnings()},
           {QStringLiteral("first_warning"), firstWarning()}});
    return 0;
}
