#pragma once

#include <QUrl>

#include <functional>

namespace velmora
{

/// Disks that can be taken out. Calls return at once; answers come once, on the main loop, never
/// inside the call, and not any more once this object is gone.
class Volumes
{
public:
    Volumes() = default;
    Volumes(const Volumes &) = delete;
    Volumes &operator=(const Volumes &) = delete;
    virtual ~Volumes() = default;

    /// Unmounts and ejects the volume that the file lies on. False where that cannot be done.
    virtual void ejectVolumeOf(const QUrl &file, std::function<void(bool ejected)> done) = 0;
};

} // namespace velmora
