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
    void findFreeName(const QUrl &wanted, NameRule rule,
                      std::function<void(const QUrl &free)> done) override;

private:
    template<typename Job>
    void run(Job job, Done done);

    FileWorker m_worker;
};

} // namespace velmora
