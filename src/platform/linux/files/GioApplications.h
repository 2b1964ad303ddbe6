#pragma once

#include "platform/Applications.h"
#include "platform/linux/files/FileWorker.h"
#include "platform/linux/files/GioCalls.h"

#include <QByteArray>

#include <vector>

namespace velmora
{

/// The applications of the desktop entries, and the user's choices among them, by way of GIO.
class GioApplications final : public Applications
{
public:
    /// The variables were set for this program alone: what is started from here does not get them.
    explicit GioApplications(std::vector<QByteArray> ownVariables = {});

    void open(const QUrl &url) override;
    void open(const QList<QUrl> &files, const Application &application) override;
    void findForFile(const QUrl &file,
                     std::function<void(const QList<Application> &)> done) override;
    void findByIdentifier(const QString &identifier,
                          std::function<void(const std::optional<Application> &)> done) override;

private:
    /// Finds an application in a thread, and opens the files in it.
    template<typename Find>
    void openIn(Find find, const QList<QUrl> &urls);
    void launch(GAppInfo *application, const QList<QUrl> &urls);

    std::vector<QByteArray> m_ownVariables;
    FileWorker m_worker;
    GioCalls m_calls;
};

} // namespace velmora
