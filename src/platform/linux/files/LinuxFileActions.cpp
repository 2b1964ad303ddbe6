#include "platform/linux/files/LinuxFileActions.h"

#include "platform/LocalPath.h"
#include "platform/linux/files/FileItems.h"
#include "platform/linux/files/LocalFile.h"
#include "platform/linux/files/TreeCopy.h"

#include <filesystem>
#include <new>
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
    runForEach({folder}, makeFolders, std::move(done));
}

void LinuxFileActions::copyItems(const QList<QUrl> &items, const QUrl &folder, NameRule rule,
                                 Done done)
{
    const auto copy = [this, folder, rule](const QByteArray &item) {
        copyItem(item, pathOf(folder), rule, m_worker.cancellable());
    };
    runForEach(items, copy, std::move(done));
}

void LinuxFileActions::moveItems(const QList<QUrl> &items, const QUrl &folder, NameRule rule,
                                 Done done)
{
    const auto move = [this, folder, rule](const QByteArray &item) {
        moveItem(item, pathOf(folder), rule, m_worker.cancellable());
    };
    runForEach(items, move, std::move(done));
}

void LinuxFileActions::trashItems(const QList<QUrl> &items, Done done)
{
    runForEach(items, trashItem, std::move(done));
}

void LinuxFileActions::findLinks(const QList<QUrl> &items, Answer<ArchiveItems> done)
{
    run<ArchiveItems>(
        [items] {
            ArchiveItems found;
            for (const QUrl &item : items) {
                addArchiveItem(pathOf(item), found);
            }
            return found;
        },
        std::move(done));
}

void LinuxFileActions::placeItem(const QUrl &item, const QUrl &wanted, NameRule rule,
                                 Answer<QUrl> done)
{
    const auto place = [item, wanted, rule] {
        return fileUrl(velmora::placeItem(pathOf(item), pathOf(wanted), rule));
    };
    run<QUrl>(place, std::move(done));
}

void LinuxFileActions::discardItem(const QUrl &item)
{
    runForEach({item}, discard, [](const auto & /*error*/) {});
}

template<typename Value, typename Job>
void LinuxFileActions::run(Job job, Answer<Value> done)
{
    using Result = std::pair<std::optional<QString>, Value>;
    m_worker.run(
        [job = std::move(job)]() -> Result {
            try {
                return {std::nullopt, job()};
            } catch (const FileFailure &failure) {
                return {failure.text, Value()};
            } catch (const std::filesystem::filesystem_error &error) {
                const FileFailure failure(error.path1().c_str(), error.code().value());
                return {failure.text, Value()};
            } catch (const std::bad_alloc &) {
                return {QStringLiteral("There is not enough memory"), Value()};
            }
        },
        [done = std::move(done)](const Result &result) { done(result.first, result.second); });
}

template<typename Job>
void LinuxFileActions::runForEach(const QList<QUrl> &items, Job job, Done done)
{
    run<int>(
        [items, job = std::move(job)] {
            for (const QUrl &item : items) {
                job(pathOf(item));
            }
            return 0;
        },
        [done = std::move(done)](const auto &error, int /*nothing*/) { done(error); });
}

} // namespace velmora
