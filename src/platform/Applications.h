#pragma once

#include <QList>
#include <QString>
#include <QUrl>

#include <functional>
#include <optional>

namespace velmora
{

/// An installed application.
struct Application {
    QString id;
    QString name;     ///< for the user to read
    QString iconName; ///< of the icon theme, or an absolute path; may be empty

    [[nodiscard]] bool operator==(const Application &) const = default;
};

/// The applications of the desktop. Calls return at once; answers come once, on the main loop,
/// never inside the call, and not any more once this object is gone.
class Applications
{
public:
    Applications() = default;
    Applications(const Applications &) = delete;
    Applications &operator=(const Applications &) = delete;
    virtual ~Applications() = default;

    /// Opens a file, folder or address with its default application. Without one nothing happens.
    virtual void open(const QUrl &url) = 0;

    /// Opens all files in one application, in one go. A failure goes unnoticed.
    virtual void open(const QList<QUrl> &files, const Application &application) = 0;

    /// Those that can open a file, the preferred one first.
    virtual void findForFile(const QUrl &file,
                             std::function<void(const QList<Application> &)> done) = 0;

    /// The one that plays the part of a well-known application, given by its bundle identifier.
    virtual void findByIdentifier(const QString &identifier,
                                  std::function<void(const std::optional<Application> &)> done) = 0;
};

} // namespace velmora
