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

/// Items as an archiver is to be told of them, so that only links that were named are followed.
struct ArchiveItems {
    QList<QUrl> links; ///< those of the items that lead to a file or folder
    QList<QUrl> rest;  ///< the others, and all that is in the folders that links lead to
};

/// Work on files and folders. Every call returns at once; its answer comes once, on the main loop,
/// never inside the call, and not any more once this object is gone. Links are never followed:
/// where one is named, it is the link itself that is worked on.
class FileActions
{
public:
    /// Nothing on success, else what went wrong, for the user to read.
    using Done = std::function<void(const std::optional<QString> &error)>;

    template<typename Value>
    using Answer = std::function<void(const std::optional<QString> &error, const Value &value)>;

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

    /// Tells apart what an archiver has to follow and what it has to store as it is.
    virtual void findLinks(const QList<QUrl> &items, Answer<ArchiveItems> done) = 0;

    /// Gives an item that was made under a hidden name the first name of the rule, for `wanted`,
    /// that is free, and tells it. Nothing is ever replaced.
    virtual void placeItem(const QUrl &item, const QUrl &wanted, NameRule rule,
                           Answer<QUrl> done) = 0;

    /// Removes an item that the program itself has made, if it is there.
    virtual void discardItem(const QUrl &item) = 0;
};

} // namespace velmora
