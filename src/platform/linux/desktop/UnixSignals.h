#pragma once

#include "platform/linux/UniqueFd.h"

#include <QObject>
#include <QSocketNotifier>

#include <csignal>
#include <optional>
#include <utility>
#include <vector>

namespace velmora
{

/// Turns the signals that ask a process to end (SIGTERM, SIGINT, SIGHUP) into one of Qt's, on the
/// main loop. One at a time in a process; its end brings back what was there before.
class UnixSignals : public QObject
{
    Q_OBJECT

public:
    UnixSignals();
    UnixSignals(const UnixSignals &) = delete;
    UnixSignals &operator=(const UnixSignals &) = delete;
    ~UnixSignals() override;

Q_SIGNALS:
    void terminationRequested();

private:
    void install(int signal);
    void drain();

    UniqueFd m_eventFd;
    std::optional<QSocketNotifier> m_notifier;
    std::vector<std::pair<int, struct sigaction>> m_previous;
};

} // namespace velmora
