#pragma once

#include <QList>
#include <QUrl>

namespace velmora
{

/// Sending files to another device of the user's, near by.
class Sharing
{
public:
    Sharing() = default;
    Sharing(const Sharing &) = delete;
    Sharing &operator=(const Sharing &) = delete;
    virtual ~Sharing() = default;

    /// Hands the files over, in order, and returns at once; the outcome is not told. Nothing
    /// happens where there is no such service or no device to send to.
    virtual void send(const QList<QUrl> &files) = 0;
};

} // namespace velmora
