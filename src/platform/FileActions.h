#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QUrl>

#include <functional>
#include <optional>

namespace velmora
{

/// What to call something where names may be taken: the name for a given attempt, counted from 0.
/// Asked on any thread, any number of times.
using NameRule = QByteArray (*)(const QByteArray &name, int attempt);

/// Work on files and folders. Every call returns at once; its answer comes once, on the main loop,
/// never inside the call, and not any more once this object is gone. Links are never followed:
/// where one is named, it is the link itself that is worked on.
class FileActions
{
public:
    /// Nothing on success, else what went wrong, for the user to read.
    using Done = std::function<void(const std::optional<QString> &error)>;

    FileActions() = default;
    FileActions(const FileActions &) = delete;
    FileActions &operator=(const FileActions &) = delete;
    virtual ~FileActions() = default;

    /// Makes the folder and those above it. One that exists is no error.
    virtual void createFolder(const QUrl &folder, Done done) = 0;

    /// Copies or moves the items, in order, into an existing folder, each under the first name of
    /// the rule that is free. The first failure ends it; what was done before it stays. An item
    /// comes up under its name only when it is complete, and nothing is ever replaced.
    virtual void copyItems(const QList<QUrl> &items, const QUrl &folder, NameRule rule,
                           Done done) = 0;
    virtual void moveItems(const QList<QUrl> &items, const QUrl &folder, NameRule rule,
                           Done done) = 0;

    /// Moves the items, in order, to the user's trash. The first failure ends it.
    virtual void trashItems(const QList<QUrl> &items, Done done) = 0;

    /// Finds the first name of the rule, beside the wanted file, that is free at this moment.
    virtual void findFreeName(const QUrl &wanted, NameRule rule,
                              std::function<void(const QUrl &free)> done) = 0;
};

} // namespace velmora
