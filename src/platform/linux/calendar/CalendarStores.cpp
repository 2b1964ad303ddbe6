#include "platform/linux/calendar/CalendarStores.h"

#include "platform/linux/calendar/CalendarFolders.h"
#include "platform/linux/calendar/SourceGroup.h"
#include "platform/linux/dbus/BusCall.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QLoggingCategory>
#include <QPluginLoader>
#include <QStandardPaths>

namespace velmora
{

namespace
{

Q_LOGGING_CATEGORY(lcCalendar, "com.velmora.app.Calendar", QtInfoMsg)

SourceFactory folderSource(const QString &folders)
{
    std::vector<std::string> roots{
        QFile::encodeName(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                          QStringLiteral("/velmora/calendars"))
            .toStdString()};
    for (QString folder : folders.split(QLatin1Char(':'), Qt::SkipEmptyParts)) {
        if (folder.startsWith(QLatin1String("~/"))) {
            folder.replace(0, 1, QDir::homePath());
        }
        roots.push_back(QFile::encodeName(QDir::cleanPath(folder.trimmed())).toStdString());
    }
    const auto isCancelled = std::make_shared<std::atomic<bool>>(false);
    return {[roots, isCancelled] { return std::make_unique<CalendarFolders>(roots, isCancelled); },
            [isCancelled] { *isCancelled = true; }};
}

/// The module lies beside the program, or where a package puts it.
void addEvolution(SourceGroup &group)
{
    const QString beside = QCoreApplication::applicationDirPath();
    for (const QString &folder : {beside, beside + QStringLiteral("/" VELMORA_MODULES)}) {
        const QString path = folder + QStringLiteral("/velmora-eds.so");
        if (!QFile::exists(path)) {
            continue;
        }
        QPluginLoader loader(path);
        if (auto *const module = qobject_cast<CalendarModule *>(loader.instance())) {
            group.add(module->source());
            return;
        }
        qCWarning(lcCalendar) << "Not loaded:" << loader.errorString();
    }
}

} // namespace

CalendarStores makeCalendarStores(BusConnection &bus, const QString &folders)
{
    const auto group = std::make_shared<SourceGroup>();
    group->add(folderSource(folders));
    bus.whenConnected(group.get(), [&bus, group = group.get()] {
        callBus(bus.connection(), busMethod(QStringLiteral("ListActivatableNames")), group,
                [group](const QDBusMessage &answer) {
                    const QString service =
                        QStringLiteral("org.gnome.evolution.dataserver.Sources5");
                    if (group->size() == 1 &&
                        answer.arguments().value(0).toStringList().contains(service)) {
                        addEvolution(*group);
                    }
                });
    });
    return storesOver(group);
}

} // namespace velmora
