#include "platform/linux/media/BusPlayer.h"

namespace velmora
{

namespace
{

using namespace std::chrono_literals;

constexpr auto positionLifetime = 5s;

const auto objectPath = QStringLiteral("/org/mpris/MediaPlayer2");
const auto playerInterface = QStringLiteral("org.mpris.MediaPlayer2.Player");

} // namespace

BusPlayer::BusPlayer(const QDBusConnection &bus, Clock &clock, const QString &owner)
    : m_bus(bus)
    , m_clock(clock)
    , m_owner(owner)
    , m_properties(bus, clock, {owner, objectPath, playerInterface})
    , m_position(bus, clock, [this](const QDBusMessage &answer) {
        m_state.takePosition(answer.arguments().value(0), m_clock.uptime());
        tell();
    })
{
    connect(&m_properties, &BusProperties::loaded, this, [this](const QVariantMap &properties) {
        m_state.takeAll(properties, m_clock.uptime());
        tell();
    });
    connect(&m_properties, &BusProperties::changed, this, [this](const QVariantMap &properties) {
        m_state.takeChanges(properties, m_clock.uptime());
        tell();
    });
    m_bus.connect(owner, objectPath, playerInterface, QStringLiteral("Seeked"), this,
                  SLOT(takeSeeked(QDBusMessage)));
    QDBusMessage question = QDBusMessage::createMethodCall(
        owner, objectPath, QStringLiteral("org.freedesktop.DBus.Properties"),
        QStringLiteral("Get"));
    m_position.setQuestion(question << playerInterface << QStringLiteral("Position"));
}

void BusPlayer::refreshPosition()
{
    const auto now = m_clock.uptime();
    if (!m_state.isPlaying() || m_state.positionAge(now) <= positionLifetime ||
        now - m_positionAsked <= positionLifetime)
        return;
    m_positionAsked = now;
    m_position.request();
}

void BusPlayer::send(const QString &method) const
{
    m_bus.send(QDBusMessage::createMethodCall(m_owner, objectPath, playerInterface, method));
}

void BusPlayer::takeSeeked(const QDBusMessage &signal)
{
    m_state.takePosition(signal.arguments().value(0), m_clock.uptime());
    tell();
}

void BusPlayer::tell()
{
    if (m_state.takePositionDoubt() && m_state.hasItem()) {
        m_positionAsked = m_clock.uptime();
        m_position.request();
    }
    Q_EMIT told();
}

} // namespace velmora
