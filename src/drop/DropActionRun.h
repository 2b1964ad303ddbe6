#pragma once

#include "drop/DropActionsService.h"

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
    void unzipNext();
    void unzip(const QByteArray &archive);
    void convertNext();
    void convert(const QUrl &source);
    void copy();
    void move();
    void openWith();
    void music();
    void trash();
    void ejectNext();

    /// Goes on with `next` when the program has ended well, else ends the run.
    void runProcess(const QByteArray &executable, const QList<QByteArray> &arguments,
                    std::function<void()> next);

    /// Ends the run on an error, else goes on.
    [[nodiscard]] FileActions::Done orFail(std::function<void()> next);

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
    qsizetype m_next = 0; ///< of the files, where they are taken one by one
    int m_count = 0;      ///< of those that were really worked on
};

} // namespace velmora
