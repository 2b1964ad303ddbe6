// Players on the session bus that do what they are told, good or bad. Each line of standard input
// is a JSON object with one command, and is answered by the line "done":
//
//   {"appear": "name", "player": "a"}      a player (a connection of its own) takes a bus name
//   {"vanish": "a"}                        its connection ends
//   {"set": {…}, "player": "a"}            properties for later questions; null removes one
//   {"change": {…}, "player": "a"}         the same, and PropertiesChanged
//   {"invalidate": ["Metadata"], "player": "a"}
//   {"seeked": value, "player": "a"}
//   {"on": "GetAll", "do": "hang|leave|answer|refuse|nonsense", "player": "a"}
//   {"storm": count, "player": "a"}        so many changes of track at once
//   {"rate": count, "player": "a"}         so many a second from now on; 0 ends it
//   {"covers": ["address", …], "player": "a"}  for the tracks of storms, in turn
//
// Strings, lists of strings, booleans, whole numbers (x), fractions (d) and objects (a{sv}) are
// sent as such. Other types: {"$": "o", "value": "/a"}, or "v"; {"$": "repeat", "value": "ab",
// "count": 9}; {"$": "nest", "count": 9}. Each method that is called is told by a line "a Method".

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSocketNotifier>
#include <QTimer>

#include <cstdio>
#include <map>
#include <memory>
#include <unistd.h>

namespace
{

const auto objectPath = u"/org/mpris/MediaPlayer2"_qs;
const auto playerInterface = u"org.mpris.MediaPlayer2.Player"_qs;

void say(const QString &line)
{
    std::fputs((line + u'\n').toUtf8().constData(), stdout);
    std::fflush(stdout);
}

QVariantMap toMap(const QJsonObject &object);

QVariant nested(int depth)
{
    QVariant value = u"core"_qs;
    for (int i = 0; i < depth; ++i)
        value = QVariantMap{{u"inner"_qs, value}};
    return value;
}

QVariant typed(const QString &type, const QJsonObject &object)
{
    const QJsonValue value = object.value(QLatin1String("value"));
    const int count = object.value(QLatin1String("count")).toInt();
    if (type == QLatin1String("o"))
        return QVariant::fromValue(QDBusObjectPath(value.toString()));
    if (type == QLatin1String("v"))
        return QVariant::fromValue(QDBusVariant(value.toVariant()));
    return type == QLatin1String("nest") ? nested(count) : value.toString().repeated(count);
}

QVariant toBusValue(const QJsonValue &value)
{
    if (value.isArray())
        return value.toVariant().toStringList();
    if (!value.isObject())
        return value.toVariant();
    const QJsonObject object = value.toObject();
    const QString type = object.value(QLatin1String("$")).toString();
    return type.isEmpty() ? toMap(object) : typed(type, object);
}

QVariantMap toMap(const QJsonObject &object)
{
    QVariantMap map;
    for (auto entry = object.begin(); entry != object.end(); ++entry)
        map.insert(entry.key(), toBusValue(entry.value()));
    return map;
}

class Player : public QDBusVirtualObject
{
public:
    explicit Player(QString name)
        : m_name(std::move(name))
        , m_bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, m_name))
    {
        m_bus.registerVirtualObject(objectPath, this);
    }
    Player(const Player &) = delete;
    Player &operator=(const Player &) = delete;
    ~Player() override { leave(); }

    void appear(const QString &name)
    {
        m_bus.registerService(u"org.mpris.MediaPlayer2."_qs + name);
    }

    void leave() { QDBusConnection::disconnectFromBus(m_name); }

    QVariantMap set(const QJsonObject &properties)
    {
        QVariantMap changed = toMap(properties);
        for (auto entry = changed.begin(); entry != changed.end(); ++entry) {
            if (entry.value().isNull())
                m_properties.remove(entry.key());
            else
                m_properties.insert(entry.key(), entry.value());
        }
        return changed;
    }

    void tell(const QVariantMap &changed, const QStringList &invalidated = {})
    {
        QDBusMessage signal = QDBusMessage::createSignal(
            objectPath, u"org.freedesktop.DBus.Properties"_qs, u"PropertiesChanged"_qs);
        signal << playerInterface << changed << invalidated;
        m_bus.send(signal);
    }

    void seeked(const QVariant &position)
    {
        QDBusMessage signal = QDBusMessage::createSignal(objectPath, playerInterface, u"Seeked"_qs);
        m_bus.send(signal << position);
    }

    void storm(int count)
    {
        for (int i = 0; i < count; ++i) {
            const auto number = QString::number(++m_track);
            const QVariantMap metadata{
                {u"mpris:trackid"_qs, QVariant::fromValue(QDBusObjectPath(u"/track/"_qs + number))},
                {u"mpris:artUrl"_qs, m_covers.isEmpty()
                                         ? QString(QLatin1String("/nowhere/") + number)
                                         : m_covers.at(m_track % m_covers.size())},
                {u"xesam:title"_qs, QString(QLatin1String("Track ") + number)}};
            m_properties.insert(u"Metadata"_qs, metadata);
            tell({{u"Metadata"_qs, metadata}});
        }
    }

    /// Changes of track a second, by the clock.
    void stormOn(int rate)
    {
        constexpr int turns = 100; // a second
        m_clock.stop();
        m_clock.disconnect();
        if (rate <= 0)
            return;
        QObject::connect(&m_clock, &QTimer::timeout, [this, rate] { storm(rate / turns); });
        m_clock.setTimerType(Qt::PreciseTimer);
        m_clock.start(1000 / turns);
    }

    void setCovers(const QStringList &addresses) { m_covers = addresses; }

    void behave(const QString &method, const QString &deed) { m_deeds[method] = deed; }

    [[nodiscard]] QString introspect(const QString &) const override { return {}; }

    bool handleMessage(const QDBusMessage &message, const QDBusConnection &) override
    {
        const QString method = message.member();
        say(m_name + u' ' + method);
        const QString deed = m_deeds.value(method);
        if (deed == QLatin1String("hang")) {
            message.setDelayedReply(true);
        } else if (deed == QLatin1String("leave")) {
            message.setDelayedReply(true);
            QTimer::singleShot(0, this, &Player::leave);
        } else if (deed == QLatin1String("refuse")) {
            m_bus.send(message.createErrorReply(QDBusError::UnknownObject, QString()));
        } else if (deed == QLatin1String("nonsense")) {
            m_bus.send(message.createReply(QVariantList{42, u"?"_qs}));
        } else if (method == QLatin1String("GetAll")) {
            m_bus.send(message.createReply(m_properties));
        } else if (method == QLatin1String("Get")) {
            const QString name = message.arguments().value(1).toString();
            const QVariant value = m_properties.value(name, u"unknown"_qs);
            m_bus.send(message.createReply(QVariant::fromValue(QDBusVariant(value))));
        } else {
            m_bus.send(message.createReply());
        }
        return true;
    }

private:
    QString m_name;
    QDBusConnection m_bus;
    QVariantMap m_properties;
    QHash<QString, QString> m_deeds;
    QStringList m_covers;
    QTimer m_clock;
    int m_track = 0;
};

class Stage
{
public:
    Player &player(const QString &name)
    {
        auto &player = m_players[name];
        if (!player)
            player = std::make_unique<Player>(name);
        return *player;
    }

    void obey(const QJsonObject &command)
    {
        const auto text = [&](const char *key) {
            return command.value(QLatin1String(key)).toString();
        };
        if (command.contains(QLatin1String("vanish"))) {
            m_players.erase(text("vanish"));
            return;
        }
        Player &one = player(text("player"));
        if (command.contains(QLatin1String("appear")))
            one.appear(text("appear"));
        one.set(command.value(QLatin1String("set")).toObject());
        if (command.contains(QLatin1String("change")))
            one.tell(one.set(command.value(QLatin1String("change")).toObject()));
        if (command.contains(QLatin1String("invalidate")))
            one.tell({}, command.value(QLatin1String("invalidate")).toVariant().toStringList());
        if (command.contains(QLatin1String("seeked")))
            one.seeked(toBusValue(command.value(QLatin1String("seeked"))));
        if (command.contains(QLatin1String("on")))
            one.behave(text("on"), text("do"));
        if (command.contains(QLatin1String("covers")))
            one.setCovers(command.value(QLatin1String("covers")).toVariant().toStringList());
        if (command.contains(QLatin1String("rate")))
            one.stormOn(command.value(QLatin1String("rate")).toInt());
        one.storm(command.value(QLatin1String("storm")).toInt());
    }

private:
    std::map<QString, std::unique_ptr<Player>> m_players;
};

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication app(argc, argv);
    Stage stage;

    QByteArray input;
    QSocketNotifier notifier(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, [&] {
        QByteArray chunk(65536, Qt::Uninitialized);
        const ssize_t count = ::read(STDIN_FILENO, chunk.data(), static_cast<size_t>(chunk.size()));
        if (count <= 0) {
            QCoreApplication::quit();
            return;
        }
        input.append(chunk.constData(), count);
        for (qsizetype end = input.indexOf('\n'); end >= 0; end = input.indexOf('\n')) {
            stage.obey(QJsonDocument::fromJson(input.left(end)).object());
            input.remove(0, end + 1);
            say(u"done"_qs);
        }
    });
    return QCoreApplication::exec();
}
