#pragma once

#include "platform/Clock.h"

#include <QObject>

#include <functional>
#include <utility>

namespace velmora
{

/// Whether a store of the user's data may be used, and when it has to be read again because it says
/// that something changed. Main thread only.
class StoreAccess : public QObject
{
    Q_OBJECT

public:
    /// Both have to outlive it.
    template<typename Store>
    StoreAccess(Clock &clock, Store &store)
        : m_clock(clock)
        , m_request([&store](QObject *context, Answer done) {
            store.requestAccess(context, std::move(done));
        })
        , m_check([&store](QObject *context, Answer done) {
            store.checkAccess(context, std::move(done));
        })
    {
        connect(&store, &Store::changed, this, &StoreAccess::storeChanged);
    }

    [[nodiscard]] bool isGranted() const { return m_isGranted; }

    /// Asks the user.
    void request();
    /// Takes the store's present answer.
    void check();
    /// The same, where access was asked for before and not granted: the store may have come back.
    void retry();

Q_SIGNALS:
    void isGrantedChanged();
    /// The store is to be read: access was granted, or something changed.
    void readWanted();

private:
    using Answer = std::function<void(bool granted)>;
    using Question = std::function<void(QObject *context, Answer done)>;

    void storeChanged();
    void setGranted(bool granted);

    Clock &m_clock;
    Question m_request;
    Question m_check;
    bool m_isAsked = false;
    bool m_isGranted = false;
    TimerHandle m_changeTask;
};

} // namespace velmora
