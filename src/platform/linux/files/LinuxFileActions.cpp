#include "platform/linux/files/LinuxFileActions.h"

#include "platform/LocalPath.h"
#include "platform/linux/files/FileItems.h"
#include "platform/linux/files/LocalFile.h"

#include <utility>

namespace velmora
{

namespace
{

constexpr int mostThreads = 4;

/// The path of a file of this machine; throws for any other.
QByteArray pathOf(const QUrl &url)
{
    const auto path = localPath(url);
    if (!path) {
        throw FileFailure(url.toDisplayString().toUtf8(),
                          QStringLiteral("Not a file of this computer"));
    }
    return *path;
}

} // namespace

LinuxFileActions::LinuxFileActions()
    : m_worker(mostThreads)
{
    localFiles();
}

void LinuxFileActions::createFolder(const QUrl &folder, Done done)
{
    run([folder](const CancelFlag & /*cancelled*/) { makeFolders(pathOf(folder)); },
        std::move(done));
}

void LinuxFileActions::copyItems(const QList<QUrl> &items, const QUrl &folder, NameRule rule,
                                 Done done)
{
    run(
        [items, folder, rule](const CancelFlag &cancelled) {
            FileContent content(cancelled);
            tidyFolder(pathOf(folder));
            for (const QUrl &item : items) {
                copyItem(pathOf(item), pathOf(folder), rule, content);
            }
        },
        std::move(done));
}

void LinuxFileActions::moveItems(const QList<QUrl> &items, const QUrl &folder, NameRule rule,
                                 Done done)
{
    run(
        [items, folder, rule](const CancelFlag &cancelled) {
            FileContent content(cancelled);
            tidyFolder(pathOf(folder));
            for (const QUrl &item : items) {
                moveItem(pathOf(item), pathOf(folder), rule, content);
            }
        },
        std::move(done));
}

void LinuxFileActions::trashItems(const QList<QUrl> &items, Done done)
{
    run(
        [items](const CancelFlag & /*cancelled*/) {
            for (const QUrl &item : items) {
                trashItem(pathOf(item));
            }
        },
        std::move(done));
}

void LinuxFileActions::findFreeName(const QUrl &wanted, NameRule rule,
                                    std::function<void(const QUrl &free)> done)
{
    m_worker.run(
        [wanted, rule](const CancelFlag & /*cancelled*/) {
            const auto path = localPath(wanted);
            return path ? fileUrl(freePath(*path, rule)) : wanted;
        },
        std::move(done));
}

/// Runs what may throw, and answers with what it threw.
template<typename Job>
void LinuxFileActions::run(Job job, Done done)
{
    m_worker.run(
        [job = std::move(job)](const CancelFlag &cancelled) -> std::optional<QString> {
            try {
                job(cancelled);
                return std::nullopt;
            } catch (const FileFailure &failure) {
                return failure.text();
            } catch (const std::bad_alloc &) {
                return QStringLiteral("There is not enough memory");
            }
        },
        std::move(done));
}

} // namespace velmora
