#pragma once

#include "platform/Clock.h"
#include "platform/SystemStatistics.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace velmora
{

class SoundOutput;

/// The machine at a glance, sampled every two seconds from construction to the end of the process,
/// whether or not anybody looks. Main thread only; a source that fails never raises an error.
class SystemMonitorService : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made once by the program")

    /// Load of all cores together, 0 to 100.
    Q_PROPERTY(double cpuUsage READ cpuUsage NOTIFY changed FINAL)
    /// Memory in units of 2^30 bytes.
    Q_PROPERTY(double memUsedGB READ memUsedGB NOTIFY changed FINAL)
    Q_PROPERTY(double memTotalGB READ memTotalGB NOTIFY changed FINAL)
    /// Output volume, 0 to 1.
    Q_PROPERTY(float volume READ volume NOTIFY changed FINAL)
    /// Rates in units of 1024 bytes a second.
    Q_PROPERTY(double netUpKBs READ netUpKBs NOTIFY changed FINAL)
    Q_PROPERTY(double netDownKBs READ netDownKBs NOTIFY changed FINAL)
    /// The file system of the home directory, in units of 2^30 bytes.
    Q_PROPERTY(double diskUsedGB READ diskUsedGB NOTIFY changed FINAL)
    Q_PROPERTY(double diskTotalGB READ diskTotalGB NOTIFY changed FINAL)

public:
    /// Takes the first sample at once. What is handed in has to outlive the service.
    SystemMonitorService(Clock &clock, SystemStatistics &statistics, SoundOutput &sound,
                         QObject *parent = nullptr);

    [[nodiscard]] double cpuUsage() const { return m_cpuUsage; }
    [[nodiscard]] double memUsedGB() const { return m_memUsedGB; }
    [[nodiscard]] double memTotalGB() const { return m_memTotalGB; }
    [[nodiscard]] float volume() const { return m_volume; }
    [[nodiscard]] double netUpKBs() const { return m_netUpKBs; }
    [[nodiscard]] double netDownKBs() const { return m_netDownKBs; }
    [[nodiscard]] double diskUsedGB() const { return m_diskUsedGB; }
    [[nodiscard]] double diskTotalGB() const { return m_diskTotalGB; }

    /// Moves the output volume by `delta` (1 is the whole range), within 0 and 1. The property
    /// follows at once; the next sample tells what the sound server made of it.
    Q_INVOKABLE void adjustVolume(float delta);

Q_SIGNALS:
    /// After a sample, or a new volume, by which one of the figures differs.
    void changed();

private:
    void sample();
    void sampleProcessor();
    void sampleMemory();
    void sampleVolume();
    void sampleNetwork();
    void sampleDisk();

    template<typename T>
    void set(T &property, T value);
    void publish();

    Clock &m_clock;
    SystemStatistics &m_statistics;
    SoundOutput &m_sound;

    double m_cpuUsage = 0;
    double m_memUsedGB = 0;
    double m_memTotalGB = 0;
    float m_volume = 0.5F;
    double m_netUpKBs = 0;
    double m_netDownKBs = 0;
    double m_diskUsedGB = 0;
    double m_diskTotalGB = 0;

    std::map<std::uint64_t, CoreTicks> m_previousTicks;
    std::optional<NetworkBytes> m_previousBytes;
    std::chrono::nanoseconds m_previousBytesTime;
    bool m_hasChanged = false; ///< since the last signal

    TimerHandle m_timer;
};

} // namespace velmora
