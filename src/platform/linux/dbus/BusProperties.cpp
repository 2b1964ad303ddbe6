#include "platform/linux/dbus/BusProperties.h"

#include "platform/linux/dbus/BusValue.h"

#include <utility>

namespace velmora
{

namespace
{

const auto propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");
const auto changeSignal = QStringLiteral("PropertiesChanged");

} // namespace

BusProperties::BusProperties(const QDBusConnection &bus, Clock &clock, Source source)
    : m_bus(bus)
    , m_source(std::move(source))
    , m_inquiry(bus, clock, [this](const QDBusMessage &answer) {
        Q_EMIT loaded(toDictionary(answer.arguments().value(0)).value_or(QVariantMap()));
    })
{
    if (m_source.service.startsWith(u':')) {
        setOwner(m_source.service);
        return;
    }
    m_watch.emplace(bus, m_source.service);
    connect(&*m_watch, &OwnerWatch::appeared, this,
            [this](const QString &, const QString &owner) { setOwner(owner); });
    connect(&*m_watch, &OwnerWatch::vanished, this, [this] { setOwner(QString()); });
}

void BusProperties::setOwner(const QString &owner)
{
    // By unique names: for any other, QtDBus would wait for the bus to tell the owner.
    if (!m_owner.isEmpty())
        m_bus.disconnect(m_owner, m_source.path, propertiesInterface, changeSignal,
                         {m_source.interface}, QString(), this, SLOT(takeChange(QDBusMessage)));
    m_owner = owner;
    if (owner.isEmpty()) {
        m_inquiry.setQuestion({});
        Q_EMIT loaded({});
        return;
    }
    m_bus.connect(owner, m_source.path, propertiesInterface, changeSignal, {m_source.interface},
                  QString(), this, SLOT(takeChange(QDBusMessage)));
    QDBusMessage question = QDBusMessage::createMethodCall(
        owner, m_source.path, propertiesInterface, QStringLiteral("GetAll"));
    m_inquiry.setQuestion(question << m_source.interface);
    m_inquiry.request();
}

void BusProperties::takeChange(const QDBusMessage &signal)
{
    const QVariantList arguments = signal.arguments();
    const auto properties = toDictionary(arguments.value(1));
    if (toText(arguments.value(0)) != m_source.interface || !properties)
        return;
    // What is only said to have changed is asked for; and one that did not answer may do so now.
    const bool isPartial = !arguments.value(2).toStringList().isEmpty();
    if (isPartial || !m_inquiry.isAnswered())
        m_inquiry.request();
    Q_EMIT changed(*properties);
}

} // namespace velmora
