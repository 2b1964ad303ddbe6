#pragma once

#include "platform/FileActions.h"
#include "platform/linux/files/FileWorker.h"

namespace velmora
{

/// Files and folders of this machine. Several calls may be at work side by side.
class LinuxFileActions final : public FileActions
{
public:
    LinuxFileActions();

    void createFolder(const QUrl &folder, Done done) override;
    void copyItems(const QList<QUrl> &items, const QUrl &folder, NameRule rule, Done done) override;
    void moveItems(const QList<QUrl> &items, const QUrl &folder, NameRule rule, Done done) override;
    void trashItems(const QList<QUrl> &items, Done done) override;
    void findLinks(const QList<QUrl> &items, Answer<ArchiveItems> done) override;
    void placeItem(const QUrl &item, const QUrl &wanted, NameRule rule, Answer<QUrl> done) override;
    void discardItem(const QUrl &item) override;

private:
    /// Runs what may throw, and answers with what it returned or threw.
    template<typename Value, typename Job>
    void run(Job job, Answer<Value> done);
    /// Runs it for each item, by its path.
    template<typename Job>
    void runForEach(const QList<QUrl> &items, Job job, Done done);

    FileWorker m_worker;
};

} // namespace velmora
