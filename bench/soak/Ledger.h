#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>

namespace velmora::bench
{

/// What the process holds at one moment.
struct Holdings {
    QMap<QByteArray, int> objects; ///< QObjects alive, of all threads, by class
    qint64 windows = 0;
    qint64 files = 0; ///< open file descriptors
    /// Memory that this process alone has written to, of 10^6 bytes: unlike the proportional figure
    /// it does not change when another program that shares libraries comes or goes.
    double megabytes = 0.0;
};

/// Counts QObjects from here on, and messages of the severity of a warning or worse; the latter
/// are also printed. Call it once, before the application object.
void startCounting();

[[nodiscard]] Holdings holdings();

[[nodiscard]] int warnings();
/// Empty as long as there was none.
[[nodiscard]] QString firstWarning();

} // namespace velmora::bench
