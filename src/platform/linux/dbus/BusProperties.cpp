#include "platform/linux/dbus/BusProperties.h"

#include "platform/linux/dbus/BusValue.h"

namespace velmora
{

BusProperties::BusProperties(QDBusConnection bus, Clock &clock, const Source &source)
    : m_interface(source.interface)
    , m_inquiry(bus, clock, [this](const QDBusMessage &answer) {
        Q_EMIT loaded(toDictionary(answer.arguments().value(0)).value_or(QVariantMap()));
    })
{
    const auto properties = QStringLiteral("org.freedesktop.DBus.Properties");
    bus.connect(source.owner, source.path, properties, QStringLiteral("PropertiesChanged"),
                {m_interface}, QString(), this, SLOT(takeChange(QDBusMessage)));
    QDBusMessage question = QDBusMessage::createMethodCall(source.owner, source.path, properties,
                                                           QStringLiteral("GetAll"));
    m_inquiry.setQuestion(question << m_interface);
    m_inquiry.request();
}

void BusProperties::takeChange(const QDBusMessage &signal)
{
    const QVariantList arguments = signal.arguments();
    const auto properties = toDictionary(arguments.value(1));
    if (toText(arguments.value(0)) != m_interface || !properties)
        return;
    // What is only said to have changed is asked for; and one that did not answer may do so now.
    const bool isPartial = !arguments.value(2).toStringList().isEmpty();
    if (isPartial || !m_inquiry.isAnswered())
        m_inquiry.request();
    Q_EMIT changed(*properties);
}

} // namespace velmora
