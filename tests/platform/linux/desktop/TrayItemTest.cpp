#include "platform/linux/desktop/TrayItem.h"

#include "platform/linux/desktop/TrayIcon.h"
#include "support/BusPeer.h"
#include "support/VirtualClock.h"

#include <QDBusConnectionInterface>
#include <QDBusContext>
#include <QDBusVariant>
#include <QRegularExpression>
#include <QTest>

#include <functional>
#include <optional>

using namespace velmora;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using velmora::test::BusPeer;

namespace
{

const QString itemPath = u"/StatusNotifierItem"_s;
const QString itemInterface = u"org.kde.StatusNotifierItem"_s;
const QString menuPath = u"/MenuBar"_s;
const QString menuInterface = u"com.canonical.dbusmenu"_s;

/// A tray host that comes, goes and refuses as the test likes.
class FakeTray : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")

public:
    explicit FakeTray(const QString &name)
        : peer(name)
    {
        bus().registerObject(u"/StatusNotifierWatcher"_s, this,
                             QDBusConnection::ExportScriptableSlots);
    }

    void start() { bus().registerService(m_service); }
    void stop()
    {
        bus().unregisterService(m_service);
        items.clear();
    }
    QDBusConnection &bus() { return peer.connection(); }

    BusPeer peer;
    QStringList items;
    int refusals = 0; ///< that many registrations are still to be refused

public Q_SLOTS:
    Q_SCRIPTABLE void RegisterStatusNotifierItem(const QString &item)
    {
        if (refusals > 0) {
            --refusals;
            sendErrorReply(QDBusError::UnknownObject, u"not yet"_s);
        } else {
            items.append(item);
        }
    }

private:
    const QString m_service = u"org.kde.StatusNotifierWatcher"_s;
};

MenuItem action(const QString &title, int tag = 0, std::function<void()> run = {},
                MenuItem::Mark mark = MenuItem::Mark::None, const QString &key = {},
                bool isChoice = false)
{
    return {MenuItem::Kind::Action, title, tag, mark, key, std::move(run), {}, isChoice};
}

MenuItem submenu(const QString &title, Menu menu)
{
    return {MenuItem::Kind::Submenu, title, 0, MenuItem::Mark::None, {}, {}, std::move(menu)};
}

const MenuItem separator{MenuItem::Kind::Separator, {}, 0, MenuItem::Mark::None, {}, {}, {}};

/// One line an entry, indented by its depth: what a user would see.
QStringList describe(const DBusMenuLayout &layout, int depth = 0)
{
    QStringList lines;
    for (const QDBusVariant &packed : layout.children) {
        const auto child = qdbus_cast<DBusMenuLayout>(packed.variant());
        const auto property = [&child](const char *name) {
            return child.properties.value(QLatin1String(name));
        };
        QString line(depth * 2, u' ');
        line += property("type") == u"separator"_s ? u"---"_s : property("label").toString();
        if (const QString toggle = property("toggle-type").toString(); !toggle.isEmpty())
            line += u' ' + toggle + (property("toggle-state").toInt() == 1 ? u" on"_s : u" off"_s);
        for (const QStringList &keys : qdbus_cast<DBusMenuShortcut>(property("shortcut")))
            line += u' ' + keys.join(u'+');
        if (const int tag = property("x-velmora-tag").toInt())
            line += u" #%1"_s.arg(tag);
        if (property("children-display") == u"submenu"_s)
            line += u" >"_s;
        lines << line << describe(child, depth + 1);
    }
    return lines;
}

/// The number of the entry with this label; 0 if there is none.
int idOf(const DBusMenuLayout &layout, const QString &label)
{
    if (layout.properties.value(u"label"_s) == label)
        return layout.id;
    int id = 0;
    for (const QDBusVariant &packed : layout.children)
        id = std::max(id, idOf(qdbus_cast<DBusMenuLayout>(packed.variant()), label));
    return id;
}

const QVariant noData = QVariant::fromValue(QDBusVariant(QString()));

} // namespace

class TrayItemTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void comesToEveryTray();
    void tellsWhatAHostReads();
    void laysOutTheMenu();
    void runsWhatIsPressedAfterTheCall();
    void refusesWhatIsNotThereOrNoLonger();

private:
    QDBusMessage menuCall(const QString &method, const QVariantList &arguments)
    {
        return m_tray->peer.call(m_service, menuPath, menuInterface, method, arguments);
    }
    DBusMenuLayout layout(int parent = 0, int depth = -1, const QStringList &names = {})
    {
        const QDBusMessage answer = menuCall(u"GetLayout"_s, {parent, depth, names});
        if (answer.signature() != u"u(ia{sv}av)")
            return {};
        return qdbus_cast<DBusMenuLayout>(answer.arguments().at(1));
    }
    bool press(int id, const QString &event = u"clicked"_s)
    {
        const QDBusMessage answer = menuCall(u"Event"_s, {id, event, noData, 0U});
        return answer.type() == QDBusMessage::ReplyMessage;
    }
    /// What a tray was told by now, with time enough for another attempt.
    QStringList itemsOf(const FakeTray &tray)
    {
        m_clock.advance(10s);
        return tray.items;
    }

    VirtualClock m_clock;
    std::optional<BusPeer> m_program;
    std::optional<FakeTray> m_tray;
    std::optional<TrayItem> m_item;
    QString m_service;
};

void TrayItemTest::init()
{
    QTest::failOnWarning(QRegularExpression(u".*"_s));
    m_item.reset();
    m_program.emplace(u"program"_s);
    m_tray.emplace(u"tray"_s);
    m_item.emplace(m_program->bus(), m_clock);
    m_service = m_program->connection().baseService();
}

void TrayItemTest::comesToEveryTray()
{
    const QStringList expected{
        u"org.kde.StatusNotifierItem-%1-1"_s.arg(QCoreApplication::applicationPid())};
    m_tray->refusals = 2;
    m_tray->start(); // later than the item, and ready for it later still
    QTRY_COMPARE(itemsOf(*m_tray), expected);

    m_tray->stop();
    m_tray->start();
    QTRY_COMPARE(itemsOf(*m_tray), expected);

    FakeTray successor(u"successor"_s);
    m_tray->stop();
    successor.start();
    QTRY_COMPARE(itemsOf(successor), expected);

    m_item.reset(); // goes with its name
    const auto isThere = [&](const QString &name) {
        return successor.bus().interface()->isServiceRegistered(name).value();
    };
    QTRY_VERIFY(!isThere(expected.first()));
    QVERIFY(!press(0));

    successor.items.clear();
    m_item.emplace(m_program->bus(), m_clock);
    QTRY_COMPARE(itemsOf(successor), expected); // earlier than the item
    QVERIFY(isThere(expected.first()));
}

void TrayItemTest::tellsWhatAHostReads()
{
    const QDBusMessage answer = m_tray->peer.call(
        m_service, itemPath, u"org.freedesktop.DBus.Properties"_s, u"GetAll"_s, {itemInterface});
    const auto properties = qdbus_cast<QVariantMap>(answer.arguments().value(0));
    const auto property = [&properties](const char *name) {
        return properties.value(QLatin1String(name));
    };
    QCOMPARE(property("Id"), u"velmora"_s);
    QCOMPARE(property("Status"), u"Active"_s);
    QCOMPARE(property("ItemIsMenu"), true);
    QCOMPARE(property("Menu").value<QDBusObjectPath>().path(), menuPath);
    QCOMPARE(property("ToolTip").value<QDBusArgument>().currentSignature(), u"(sa(iiay)ss)"_s);
    const auto pixmaps = qdbus_cast<StatusNotifierPixmapList>(property("IconPixmap"));
    QCOMPARE(pixmaps.size(), 6);
    for (const StatusNotifierPixmap &pixmap : pixmaps)
        QCOMPARE(pixmap.pixels.size(), qsizetype{4} * pixmap.width * pixmap.height);

    // Alpha first, then red, green, blue, whatever the machine's own order; and not premultiplied.
    QImage image(2, 1, QImage::Format_ARGB32_Premultiplied);
    image.setPixelColor(0, 0, QColor(1, 2, 3, 255));
    image.setPixelColor(1, 0, QColor(255, 0, 0, 51));
    QCOMPARE(toStatusNotifierPixmap(image).pixels.toHex(), QByteArray("ff01020333ff0000"));

    for (const QImage &icon : drawTrayIcons()) {
        const auto alphaAt = [&icon](double y) {
            return icon.pixelColor(icon.width() / 2, static_cast<int>(icon.height() * y)).alpha();
        };
        QCOMPARE(icon.pixelColor(0, 0).alpha(), 0);
        QVERIFY2(alphaAt(0.30) > 200, "the top third is filled");
        QCOMPARE(alphaAt(0.60), 0);
    }
}

void TrayItemTest::laysOutTheMenu()
{
    QVERIFY(m_tray->bus().connect(m_service, menuPath, menuInterface, u"LayoutUpdated"_s,
                                  &QTestEventLoop::instance(), SLOT(exitLoop())));
    QCOMPARE(describe(layout()), QStringList());
    const auto revision = [this] {
        return menuCall(u"GetLayout"_s, {0, 0, QStringList()}).arguments().value(0).toUInt();
    };
    const uint before = revision();

    using Mark = MenuItem::Mark;
    m_item->setMenu({action(u"Enable"_s, 0, {}, Mark::On), separator,
                     submenu(u"Profile"_s, {action(u"a_b"_s, 0, {}, Mark::Off, {}, true),
                                            action(u"B"_s, 1, {}, Mark::On, {}, true)}),
                     submenu(u"Nothing"_s, {}), action(u"Preferences…"_s, 0, {}, {}, u","_s),
                     action(u"Quit"_s, 0, {}, {}, u"q"_s)});
    QTestEventLoop::instance().enterLoop(5);
    QVERIFY(!QTestEventLoop::instance().timeout());
    QCOMPARE(describe(layout()),
             (QStringList{u"Enable checkmark on"_s, u"---"_s, u"Profile >"_s, u"  a__b radio off"_s,
                          u"  B radio on #1"_s, u"Nothing >"_s, u"Preferences… Control+comma"_s,
                          u"Quit Control+q"_s}));
    QVERIFY(revision() > before);

    m_item->setMenu({submenu(u"A"_s, {submenu(u"B"_s, {action(u"C"_s, 7)})})});
    const DBusMenuLayout whole = layout();
    QCOMPARE(describe(layout(0, 0)), QStringList());
    QCOMPARE(describe(layout(0, 1)), QStringList{u"A >"_s});
    QCOMPARE(describe(layout(idOf(whole, u"B"_s))), QStringList{u"C #7"_s});
    const QStringList onlyLabels{u"label"_s, u"nonsense"_s};
    QCOMPARE(describe(layout(0, -1, onlyLabels)), (QStringList{u"A"_s, u"  B"_s, u"    C"_s}));

    const int id = idOf(whole, u"C"_s);
    const QDBusMessage group = menuCall(
        u"GetGroupProperties"_s, {QVariant::fromValue(QList<int>{id, 4711, id}), onlyLabels});
    const auto list = qdbus_cast<QList<DBusMenuProperties>>(group.arguments().value(0));
    QCOMPARE(list.size(), 1);
    QCOMPARE(list.first().properties, (QVariantMap{{u"label"_s, u"C"_s}}));
    const QDBusMessage one = menuCall(u"GetProperty"_s, {id, u"x-velmora-tag"_s});
    QCOMPARE(one.arguments().value(0).value<QDBusVariant>().variant(), QVariant(7));
}

void TrayItemTest::runsWhatIsPressedAfterTheCall()
{
    int pressed = 0;
    const auto replaceMenu = [&] {
        ++pressed;
        m_item->setMenu({action(u"New"_s)});
    };
    m_item->setMenu({action(u"Replace"_s, 0, replaceMenu), action(u"Inert"_s)});
    const int id = idOf(layout(), u"Replace"_s);
    for (const auto &event : {u"opened"_s, u"hovered"_s, QString()})
        QVERIFY(press(id, event));
    for (const int inert : {0, idOf(layout(), u"Inert"_s)})
        QVERIFY(press(inert));
    QCOMPARE(pressed, 0);
    QVERIFY(press(id));
    QTRY_COMPARE(describe(layout()), QStringList{u"New"_s});
    QCOMPARE(pressed, 1);

    // An action may take the item itself away.
    m_item->setMenu({action(u"End"_s, 0, [this] { m_item.reset(); })});
    press(idOf(layout(), u"End"_s));
    QTRY_VERIFY(!m_item);
}

void TrayItemTest::refusesWhatIsNotThereOrNoLonger()
{
    QStringList pressed;
    const auto note = [&pressed](const QString &what) {
        return action(what, 0, [&pressed, what] { pressed << what; });
    };
    m_item->setMenu({note(u"harmless"_s)});
    const int old = idOf(layout(), u"harmless"_s);
    m_item->setMenu({note(u"quit"_s)});
    const int present = idOf(layout(), u"quit"_s);

    QVERIFY(!press(old));
    const QList<DBusMenuEvent> events{{old, u"clicked"_s, QDBusVariant(QString()), 0},
                                      {present, u"hovered"_s, QDBusVariant(QString()), 0}};
    const QDBusMessage answer = menuCall(u"EventGroup"_s, {QVariant::fromValue(events)});
    QCOMPARE(qdbus_cast<QList<int>>(answer.arguments().value(0)), QList<int>{old});
    QVERIFY(press(present));
    QTRY_COMPARE(pressed, QStringList{u"quit"_s});

    m_item->setMenu({action(u"Only"_s, 0, [] { QFAIL("pressed"); })});
    const int only = idOf(layout(), u"Only"_s);
    const QVariant nobody = QVariant::fromValue(QList<int>{-1, 4711});
    const auto none = QVariant::fromValue(
        QList<DBusMenuEvent>{{only + 1, u"clicked"_s, QDBusVariant(QString()), 0}});
    const std::vector<std::pair<QString, QVariantList>> calls{
        {u"GetLayout"_s, {std::numeric_limits<int>::min(), -1, QStringList()}},
        {u"GetGroupProperties"_s, {nobody, QStringList()}},
        {u"GetProperty"_s, {4711, u"label"_s}},
        {u"GetProperty"_s, {only, u"lab\u202eel"_s}},
        {u"Event"_s, {std::numeric_limits<int>::max(), u"clicked"_s, noData, 0U}},
        {u"EventGroup"_s, {none}},
        {u"AboutToShow"_s, {-1}},
        {u"AboutToShowGroup"_s, {nobody}},
    };
    for (const auto &[method, arguments] : calls)
        QVERIFY2(menuCall(method, arguments).type() == QDBusMessage::ErrorMessage,
                 qPrintable(method));
    QCOMPARE(describe(layout()), QStringList{u"Only"_s});
}

QTEST_GUILESS_MAIN(TrayItemTest)
#include "TrayItemTest.moc"
