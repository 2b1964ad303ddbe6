#include "app/Application.h"
#include "platform/linux/dbus/BusConnection.h"
#include "platform/linux/windowing/Windowing.h"

#include <QDBusConnection>
#include <QGuiApplication>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <malloc.h>
#include <optional>

namespace
{

using namespace std::chrono_literals;

/// What is freed of covers is given back to the system, instead of being kept, in pieces, for more.
/// Left to itself the allocator moves that limit up with the first large block that is freed.
void keepLargeBlocksApart()
{
    mallopt(M_MMAP_THRESHOLD, 128 * 1024);
}

/// Qt's ways of telling that there is no display are many lines and a core dump. While one of these
/// lives it is one line, and what else Qt has to say comes afterwards.
class DisplayFailure
{
public:
    DisplayFailure() { qInstallMessageHandler(hold); }
    DisplayFailure(const DisplayFailure &) = delete;
    DisplayFailure &operator=(const DisplayFailure &) = delete;
    ~DisplayFailure()
    {
        qInstallMessageHandler(nullptr);
        for (const QString &line : held) {
            std::fprintf(stderr, "%s\n", qUtf8Printable(line));
        }
        held.clear();
    }

private:
    static void hold(QtMsgType type, const QMessageLogContext &context, const QString &message)
    {
        if (type == QtFatalMsg) {
            const QString reason = held.value(0, message).section(u'\n', 0, 0);
            std::fprintf(stderr, "velmora: there is no display: %s\n", qUtf8Printable(reason));
            std::_Exit(EXIT_FAILURE);
        }
        held << qFormatLogMessage(type, context, message);
    }

    static inline QStringList held;
};

/// Qt looks for the session bus by itself, for accessibility, and would wait for one that hangs.
/// While one of these lives there is none for Qt, which never looks again.
class NoBusForQt
{
public:
    NoBusForQt() { qputenv(variable, "disabled:"); }
    NoBusForQt(const NoBusForQt &) = delete;
    NoBusForQt &operator=(const NoBusForQt &) = delete;
    ~NoBusForQt()
    {
        static_cast<void>(QDBusConnection::sessionBus());
        if (m_address.isNull()) {
            qunsetenv(variable);
        } else {
            qputenv(variable, m_address);
        }
    }

private:
    static constexpr auto variable = "DBUS_SESSION_BUS_ADDRESS";
    QByteArray m_address = qgetenv(variable);
};

} // namespace

int main(int argc, char *argv[])
{
    keepLargeBlocksApart();
    std::signal(SIGPIPE, SIG_IGN); // whoever reads what we print may leave
    velmora::BusConnection bus(velmora::BusConnection::sessionAddress());
    // What is drawn with, and where, is decided before the application object looks for itself.
    velmora::chooseWindowSystem();
    QCoreApplication::setApplicationName(QStringLiteral("velmora"));
    QGuiApplication::setApplicationDisplayName(QStringLiteral("Velmora"));
    QGuiApplication::setDesktopFileName(QStringLiteral("com.velmora.app"));
    std::optional<NoBusForQt> noBus;
    bus.waitForAnswer(500ms);
    if (!bus.isConnected()) {
        noBus.emplace();
    }
    std::optional<DisplayFailure> displayFailure(std::in_place);
    const QGuiApplication application(argc, argv);
    displayFailure.reset();
    noBus.reset();
    QGuiApplication::setQuitOnLastWindowClosed(false);
    return velmora::runApplication(bus);
}
