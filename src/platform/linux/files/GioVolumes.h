#pragma once

#include "platform/Volumes.h"
#include "platform/linux/files/GioCalls.h"

#include <QObject>

namespace velmora
{

/// Volumes as GIO sees them: with gvfs, those of UDisks.
class GioVolumes final : public QObject, public Volumes
{
    Q_OBJECT

public:
    void ejectVolumeOf(const QUrl &file, std::function<void(bool ejected)> done) override;

private:
    using Done = std::function<void(bool ejected)>;

    void eject(GMount *mount, const Done &done);

    GioCalls m_calls;
};

} // namespace velmora
