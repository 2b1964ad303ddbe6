#include "soak/Ledger.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QObject>
#include <QWindow>

#include <atomic>
#include <cstdio>
#include <mutex>
#include <unordered_set>

// The hooks that Qt offers to tools that follow the life of its objects: exported, but declared in
// a private header only. The places in the array are part of the binary interface.
extern quintptr Q_DECL_IMPORT qtHookData[]; // NOLINT(readability-redundant-declaration)

namespace velmora::bench
{

namespace
{

constexpr int addObjectHook = 3;
constexpr int removeObjectHook = 4;

std::mutex objectMutex;
std::unordered_set<const QObject *> liveObjects;
std::atomic<int> warningCount{0};
std::mutex warningMutex;
QString warningText;

void objectAdded(QObject *object)
{
    const std::lock_guard lock(objectMutex);
    liveObjects.insert(object);
}

void objectRemoved(QObject *object)
{
    const std::lock_guard lock(objectMutex);
    liveObjects.erase(object);
}

QMap<QByteArray, int> objectsByClass()
{
    const std::lock_guard lock(objectMutex);
    QMap<QByteArray, int> counts;
    for (const QObject *object : liveObjects)
        ++counts[object->metaObject()->className()];
    return counts;
}

void handleMessage(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    // Not in order of severity: information was added last.
    if (type == QtDebugMsg || type == QtInfoMsg)
        return;
    const QString text = qFormatLogMessage(type, context, message);
    std::fprintf(stderr, "%s\n", qUtf8Printable(text));
    const std::lock_guard lock(warningMutex);
    if (++warningCount == 1)
        warningText = message;
}

double dirtyMegabytes()
{
    QFile file(QStringLiteral("/proc/self/smaps_rollup"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const auto lines = file.readAll().split('\n');
    for (const auto &line : lines) {
        if (line.startsWith("Private_Dirty:"))
            return line.mid(14).trimmed().split(' ').constFirst().toDouble() * 1024 / 1e6;
    }
    return 0;
}

} // namespace

void startCounting()
{
    qtHookData[addObjectHook] = reinterpret_cast<quintptr>(&objectAdded);
    qtHookData[removeObjectHook] = reinterpret_cast<quintptr>(&objectRemoved);
    qInstallMessageHandler(handleMessage);
}

Holdings holdings()
{
    return {objectsByClass(), QGuiApplication::allWindows().size(),
            QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::Files | QDir::System).size(),
            dirtyMegabytes()};
}

int warnings()
{
    return warningCount;
}

QString firstWarning()
{
    const std::lock_guard lock(warningMutex);
    return warningText;
}

} // namespace velmora::bench
