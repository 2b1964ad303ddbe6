#include "services/StoreAccess.h"

namespace velmora
{

namespace
{

using namespace std::chrono_literals;

constexpr auto changeDelay = 50ms; // changes of that time are read together

} // namespace

void StoreAccess::request()
{
    m_isAsked = true;
    m_request(this, [this](bool granted) {
        setGranted(granted);
        if (granted) {
            Q_EMIT readWanted();
        }
    });
}

void StoreAccess::check()
{
    m_isAsked = true;
    m_check(this, [this](bool granted) {
        const bool isNew = granted && !m_isGranted;
        setGranted(granted);
        if (isNew) {
            Q_EMIT readWanted();
        }
    });
}

void StoreAccess::retry()
{
    if (m_isAsked && !m_isGranted) {
        check();
    }
}

void StoreAccess::storeChanged()
{
    if (m_changeTask) {
        return;
    }
    m_changeTask = m_clock.after(changeDelay, [this] {
        m_changeTask.reset();
        if (m_isGranted) {
            Q_EMIT readWanted();
        } else {
            retry();
        }
    });
}

void StoreAccess::setGranted(bool granted)
{
    if (granted != m_isGranted) {
        m_isGranted = granted;
        Q_EMIT isGrantedChanged();
    }
}

} // namespace velmora
