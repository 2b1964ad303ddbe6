#pragma once

#include "drop/DropActionsService.h"
#include "platform/ChildProcesses.h"

#include <QPointer>

#include <functional>
#include <utility>

namespace velmora
{

/// One drop that is being worked on, from `start` on. It deletes itself when it has given the
/// service its outcome.
class DropActionRun : public QObject
{
    Q_OBJECT

public:
    /// `files` must not be empty.
    DropActionRun(DropActionsService &service, const DropRoles &roles, DropActionID action,
                  QList<QUrl> files);

    void start();

private:
    using Error = std::optional<QString>;

    void shelf();
    void zip();
    void runZip(const QList<QByteArray> &options, const QList<QUrl> &files,
                std::function<void()> next);
    void placeArchive();
    void unzipNext();
    void unzip(const QByteArray &archive);
    void convertNext();
    void convert(const QUrl &source);
    void openWith();
    void music();
    void ejectNext();

    /// Goes on with `next` when the program has ended well, else ends the run.
    void runProcess(const Command &command, std::function<void()> next);

    /// Ends the run on an error, else goes on.
    [[nodiscard]] FileActions::Done orFail(std::function<void()> next);

    /// Ends the run, with this message and the number of files unless there was an error.
    [[nodiscard]] FileActions::Done finished(const QString &message);

    /// An answer that is dropped once this run is gone.
    template<typename Function>
    [[nodiscard]] auto guarded(Function function)
    {
        return [self = QPointer(this), function = std::move(function)](auto &&...arguments) {
            if (self != nullptr) {
                function(std::forward<decltype(arguments)>(arguments)...);
            }
        };
    }

    void succeed(const QString &message = {});
    void fail(const QString &error);

    DropActionsService &m_service;
    DropRoles m_roles;
    DropActionID m_action;
    QList<QUrl> m_files;
    QByteArray m_unfinished; ///< the archive, until it gets its name
    QUrl m_target;           ///< what it is to be called
    qsizetype m_next = 0;    ///< of the files, where they are taken one by one
    int m_count = 0;         ///< of those that were really worked on
};

} // namespace velmora
