#include "platform/linux/desktop/TrayItem.h"

#include "platform/linux/desktop/FakeTray.h"
#include "platform/linux/desktop/TrayIcon.h"

#include <QDBusConnectionInterface>
#include <QDBusVariant>
#include <QRegularExpression>
#include <QTest>

#include <functional>
#include <memory>

using namespace velmora;
using velmora::test::BusPeer;
using velmora::test::FakeTray;

namespace
{

const auto itemInterface = QStringLiteral("org.kde.StatusNotifierItem");
const auto menuInterface = QStringLiteral("com.canonical.dbusmenu");
const auto propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");

MenuItem action(const QString &title, int tag = 0, std::function<void()> run = {},
                MenuItem::Mark mark = MenuItem::Mark::None, const QString &key = {},
                bool isChoice = false)
{
    return {MenuItem::Kind::Action, title, tag, mark, key, std::move(run), {}, isChoice};
}

MenuItem separator()
{
    return {MenuItem::Kind::Separator, {}, 0, MenuItem::Mark::None, {}, {}, {}};
}

MenuItem submenu(const QString &title, Menu menu)
{
    return {MenuItem::Kind::Submenu, title, 0, MenuItem::Mark::None, {}, {}, std::move(menu)};
}

DBusMenuLayout unpack(const QDBusVariant &child)
{
    return qdbus_cast<DBusMenuLayout>(child.variant());
}

QString keysOf(const QVariantMap &properties)
{
    const auto keys = qdbus_cast<DBusMenuShortcut>(properties.value(QStringLiteral("shortcut")));
    return keys.isEmpty() ? QString() : QLatin1String(" ") + keys.first().join(u'+');
}

/// One line an entry, indented by its depth: what a user would see.
QStringList describe(const DBusMenuLayout &layout, int depth = 0)
{
    QStringList lines;
    for (const QDBusVariant &packed : layout.children) {
        const DBusMenuLayout child = unpack(packed);
        const QVariantMap &properties = child.properties;
        QString line(depth * 2, u' ');
        if (properties.value(QStringLiteral("type")) == QLatin1String("separator"))
            line += QLatin1String("---");
        else
            line += properties.value(QStringLiteral("label")).toString();
        const QString toggle = properties.value(QStringLiteral("toggle-type")).toString();
        if (!toggle.isEmpty()) {
            const bool on = properties.value(QStringLiteral("toggle-state")).toInt() == 1;
            line += u' ' + toggle + (on ? QLatin1String(" on") : QLatin1String(" off"));
        }
        line += keysOf(properties);
        if (const int tag = properties.value(QStringLiteral("x-velmora-tag")).toInt())
            line += QStringLiteral(" #%1").arg(tag);
        if (properties.value(QStringLiteral("children-display")) == QLatin1String("submenu"))
            line += QLatin1String(" >");
        lines << line << describe(child, depth + 1);
    }
    return lines;
}

int idOf(const DBusMenuLayout &layout, const QString &label)
{
    for (const QDBusVariant &packed : layout.children) {
        const DBusMenuLayout child = unpack(packed);
        if (child.properties.value(QStringLiteral("label")).toString() == label)
            return child.id;
        if (const int below = idOf(child, label); below != 0)
            return below;
    }
    return 0;
}

QVariant text(const char *characters)
{
    return QVariant::fromValue(QDBusVariant(QString::fromUtf8(characters)));
}

} // namespace

class TrayItemTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void comesToEveryTray();
    void insistsOnAHesitantTray();
    void leavesWithItsName();
    void tellsWhatAHostReads();
    void drawsItsSymbol();
    void laysOutTheMenu();
    void cutsTheLayoutAsAsked();
    void runsWhatIsPressedAfterTheCall();
    void neverTakesAnOldEntryForANewOne();
    void answersHostileCallsWithErrors_data();
    void answersHostileCallsWithErrors();
    void isSilentWithoutABus();

private:
    QDBusMessage menuCall(const QString &method, const QVariantList &arguments)
    {
        return m_tray->peer().call(m_service, QStringLiteral("/MenuBar"), menuInterface, method,
                                   arguments);
    }
    DBusMenuLayout layout(int parent = 0, int depth = -1, const QStringList &names = {})
    {
        const QDBusMessage answer = menuCall(QStringLiteral("GetLayout"), {parent, depth, names});
        if (answer.signature() != QLatin1String("u(ia{sv}av)"))
            return {};
        return qdbus_cast<DBusMenuLayout>(answer.arguments().at(1));
    }
    QDBusMessage press(int id)
    {
        return menuCall(QStringLiteral("Event"), {id, QStringLiteral("clicked"), text(""), 0U});
    }

    std::unique_ptr<BusPeer> m_program;
    std::unique_ptr<FakeTray> m_tray;
    std::unique_ptr<TrayItem> m_item;
    QString m_service;
};

void TrayItemTest::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".*")));
    m_program = std::make_unique<BusPeer>(QStringLiteral("program"));
    m_tray = std::make_unique<FakeTray>(QStringLiteral("tray"));
    m_item = std::make_unique<TrayItem>(m_program->bus(), QString(), drawTrayIcons());
    m_service = m_program->connection().baseService();
}

void TrayItemTest::cleanup()
{
    m_item.reset();
    m_tray.reset();
    m_program.reset();
}

void TrayItemTest::comesToEveryTray()
{
    const QStringList expected{
        QStringLiteral("org.kde.StatusNotifierItem-%1-1").arg(QCoreApplication::applicationPid())};
    m_tray->start(); // later than the item
    QTRY_COMPARE(m_tray->items, expected);

    m_tray->stop();
    m_tray->start();
    QTRY_COMPARE(m_tray->items, expected);

    FakeTray successor(QStringLiteral("successor"));
    m_tray->stop();
    successor.start();
    QTRY_COMPARE(successor.items, expected);

    m_item.reset();
    successor.items.clear();
    m_item = std::make_unique<TrayItem>(m_program->bus(), QString(), drawTrayIcons());
    QTRY_COMPARE(successor.items, expected); // earlier than the item
}

void TrayItemTest::insistsOnAHesitantTray()
{
    m_tray->refusals = 2;
    m_tray->start();
    QTRY_COMPARE(m_tray->items.size(), 1);
    QCOMPARE(m_tray->refusals, 0);
}

void TrayItemTest::leavesWithItsName()
{
    m_tray->start();
    QTRY_COMPARE(m_tray->items.size(), 1);
    const auto isThere = [this](const QString &name) {
        return m_tray->peer().connection().interface()->isServiceRegistered(name).value();
    };
    QVERIFY(isThere(m_tray->items.first()));
    m_item.reset();
    QTRY_VERIFY(!isThere(m_tray->items.first()));
    QCOMPARE(press(1).type(), QDBusMessage::ErrorMessage);
}

void TrayItemTest::tellsWhatAHostReads()
{
    const QDBusMessage answer =
        m_tray->peer().call(m_service, QStringLiteral("/StatusNotifierItem"), propertiesInterface,
                            QStringLiteral("GetAll"), {itemInterface});
    QCOMPARE(answer.type(), QDBusMessage::ReplyMessage);
    const auto properties = qdbus_cast<QVariantMap>(answer.arguments().at(0));
    QCOMPARE(properties.value(QStringLiteral("Id")), QStringLiteral("velmora"));
    QCOMPARE(properties.value(QStringLiteral("Category")), QStringLiteral("ApplicationStatus"));
    QCOMPARE(properties.value(QStringLiteral("Status")), QStringLiteral("Active"));
    QCOMPARE(properties.value(QStringLiteral("IconName")), QString());
    QCOMPARE(properties.value(QStringLiteral("IconAccessibleDesc")), QStringLiteral("Notch"));
    QCOMPARE(properties.value(QStringLiteral("ItemIsMenu")), true);
    QCOMPARE(properties.value(QStringLiteral("Menu")).value<QDBusObjectPath>().path(),
             QStringLiteral("/MenuBar"));
    QCOMPARE(properties.value(QStringLiteral("ToolTip")).value<QDBusArgument>().currentSignature(),
             QStringLiteral("(sa(iiay)ss)"));
    const auto pixmaps =
        qdbus_cast<StatusNotifierPixmapList>(properties.value(QStringLiteral("IconPixmap")));
    QCOMPARE(pixmaps.size(), 6);
    for (const StatusNotifierPixmap &pixmap : pixmaps)
        QCOMPARE(pixmap.pixels.size(), qsizetype{4} * pixmap.width * pixmap.height);

    for (const char *method : {"Activate", "SecondaryActivate", "ContextMenu"}) {
        const QDBusMessage done =
            m_tray->peer().call(m_service, QStringLiteral("/StatusNotifierItem"), itemInterface,
                                QLatin1String(method), {10, 20});
        QCOMPARE(done.type(), QDBusMessage::ReplyMessage);
    }
}

void TrayItemTest::drawsItsSymbol()
{
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
    QDBusConnection &host = m_tray->peer().connection();
    QVERIFY(host.connect(m_service, QStringLiteral("/MenuBar"), menuInterface,
                         QStringLiteral("LayoutUpdated"), &QTestEventLoop::instance(),
                         SLOT(exitLoop())));
    QCOMPARE(describe(layout()), QStringList());

    m_item->setMenu({action(QStringLiteral("Enable"), 0, {}, MenuItem::Mark::On), separator(),
                     submenu(QStringLiteral("Profile"),
                             {action(QStringLiteral("a_b"), 0, {}, MenuItem::Mark::Off, {}, true),
                              action(QStringLiteral("B"), 1, {}, MenuItem::Mark::On, {}, true)}),
                     submenu(QStringLiteral("Nothing"), {}),
                     action(QStringLiteral("Preferences…"), 0, {}, {}, QStringLiteral(",")),
                     action(QStringLiteral("Quit"), 0, {}, {}, QStringLiteral("q"))});
    QTestEventLoop::instance().enterLoop(5);
    QVERIFY(!QTestEventLoop::instance().timeout());
    QCOMPARE(describe(layout()),
             (QStringList{QStringLiteral("Enable checkmark on"), QStringLiteral("---"),
                          QStringLiteral("Profile >"), QStringLiteral("  a__b radio off"),
                          QStringLiteral("  B radio on #1"), QStringLiteral("Nothing >"),
                          QStringLiteral("Preferences… Control+comma"),
                          QStringLiteral("Quit Control+q")}));

    const auto revision = [this] {
        return menuCall(QStringLiteral("GetLayout"), {0, 0, QStringList()})
            .arguments()
            .value(0)
            .toUInt();
    };
    const uint before = revision();
    m_item->setMenu({});
    QVERIFY(revision() > before);
}

void TrayItemTest::cutsTheLayoutAsAsked()
{
    m_item->setMenu({submenu(QStringLiteral("A"),
                             {submenu(QStringLiteral("B"), {action(QStringLiteral("C"), 7)})})});
    const DBusMenuLayout whole = layout();
    QCOMPARE(describe(layout(0, 0)), QStringList());
    QCOMPARE(describe(layout(0, 1)), QStringList{QStringLiteral("A >")});
    QCOMPARE(describe(layout(idOf(whole, QStringLiteral("B")))),
             QStringList{QStringLiteral("C #7")});
    const QStringList onlyLabels{QStringLiteral("label"), QStringLiteral("nonsense")};
    QCOMPARE(describe(layout(0, -1, onlyLabels)),
             (QStringList{QStringLiteral("A"), QStringLiteral("  B"), QStringLiteral("    C")}));

    const int id = idOf(whole, QStringLiteral("C"));
    const QDBusMessage group =
        menuCall(QStringLiteral("GetGroupProperties"),
                 {QVariant::fromValue(QList<int>{id, 4711, id}), onlyLabels});
    const auto list = qdbus_cast<QList<DBusMenuProperties>>(group.arguments().value(0));
    QCOMPARE(list.size(), 1);
    QCOMPARE(list.first().properties,
             (QVariantMap{{QStringLiteral("label"), QStringLiteral("C")}}));
    const QDBusMessage one =
        menuCall(QStringLiteral("GetProperty"), {id, QStringLiteral("x-velmora-tag")});
    QCOMPARE(one.arguments().value(0).value<QDBusVariant>().variant(), QVariant(7));
}

void TrayItemTest::runsWhatIsPressedAfterTheCall()
{
    QStringList pressed;
    std::function<void()> replaceMenu = [&] {
        pressed << QStringLiteral("replace");
        m_item->setMenu({action(QStringLiteral("New"))});
    };
    m_item->setMenu({action(QStringLiteral("Replace"), 0, replaceMenu), separator(),
                     action(QStringLiteral("Inert"))});
    const DBusMenuLayout before = layout();
    const int id = idOf(before, QStringLiteral("Replace"));

    for (const char *event : {"opened", "hovered", "x-other", ""}) {
        const QDBusMessage answer =
            menuCall(QStringLiteral("Event"), {id, QLatin1String(event), text(""), 0U});
        QCOMPARE(answer.type(), QDBusMessage::ReplyMessage);
    }
    for (const int inert :
         {0, idOf(before, QStringLiteral("Inert")), unpack(before.children[1]).id})
        QCOMPARE(press(inert).type(), QDBusMessage::ReplyMessage);
    QCOMPARE(pressed, QStringList());

    QCOMPARE(press(id).type(), QDBusMessage::ReplyMessage);
    QTRY_COMPARE(pressed, QStringList{QStringLiteral("replace")});
    QCOMPARE(describe(layout()), QStringList{QStringLiteral("New")});

    // An action may take the item itself away.
    m_item->setMenu({action(QStringLiteral("End"), 0, [this] { m_item.reset(); })});
    press(idOf(layout(), QStringLiteral("End")));
    QTRY_VERIFY(!m_item);
}

void TrayItemTest::neverTakesAnOldEntryForANewOne()
{
    QStringList pressed;
    const auto note = [&pressed](const QString &what) {
        return action(what, 0, [&pressed, what] { pressed << what; });
    };
    m_item->setMenu({note(QStringLiteral("harmless"))});
    const int old = idOf(layout(), QStringLiteral("harmless"));
    m_item->setMenu({note(QStringLiteral("quit"))});
    const int present = idOf(layout(), QStringLiteral("quit"));

    QCOMPARE(press(old).type(), QDBusMessage::ErrorMessage);
    const QList<DBusMenuEvent> events{
        {old, QStringLiteral("clicked"), QDBusVariant(QString()), 0},
        {present, QStringLiteral("hovered"), QDBusVariant(QString()), 0}};
    const QDBusMessage answer =
        menuCall(QStringLiteral("EventGroup"), {QVariant::fromValue(events)});
    QCOMPARE(qdbus_cast<QList<int>>(answer.arguments().value(0)), QList<int>{old});
    press(present);
    QTRY_COMPARE(pressed, QStringList{QStringLiteral("quit")});
}

void TrayItemTest::answersHostileCallsWithErrors_data()
{
    QTest::addColumn<QString>("method");
    QTest::addColumn<QVariantList>("arguments");
    const QVariant nobody = QVariant::fromValue(QList<int>{-1, 4711});
    const QVariant clicked = QStringLiteral("clicked");
    const auto row = [](const char *name, const char *method, const QVariantList &arguments) {
        QTest::newRow(name) << QString::fromLatin1(method) << arguments;
    };
    row("layout below nothing", "GetLayout", {-2147483647 - 1, -1, QStringList()});
    row("layout with too little", "GetLayout", {0});
    row("layout of text", "GetLayout", {clicked, clicked, clicked});
    row("properties of nobody", "GetGroupProperties", {nobody, QStringList()});
    row("property of nobody", "GetProperty", {4711, QStringLiteral("label")});
    row("unknown property", "GetProperty", {1, QStringLiteral("lab\u202eel")});
    row("press nobody", "Event", {2147483647, clicked, text(""), 0U});
    row("press without data", "Event", {1, clicked});
    row("press text", "Event", {clicked, 1, 1, 1});
    row("show nobody", "AboutToShow", {-1});
    row("show nobodies", "AboutToShowGroup", {nobody});
    row("group of the wrong type", "EventGroup", {nobody});
    row("unknown method", "Explode", {});
}

void TrayItemTest::answersHostileCallsWithErrors()
{
    QFETCH(const QString, method);
    QFETCH(const QVariantList, arguments);
    int pressed = 0;
    m_item->setMenu({action(QStringLiteral("Only"), 0, [&pressed] { ++pressed; })});
    QCOMPARE(menuCall(method, arguments).type(), QDBusMessage::ErrorMessage);
    const QDBusMessage write = m_tray->peer().call(
        m_service, QStringLiteral("/MenuBar"), propertiesInterface, QStringLiteral("Set"),
        {menuInterface, QStringLiteral("Version"), text("9")});
    QCOMPARE(write.type(), QDBusMessage::ErrorMessage);
    QCOMPARE(describe(layout()), QStringList{QStringLiteral("Only")});
    QCOMPARE(pressed, 0);
}

void TrayItemTest::isSilentWithoutABus()
{
    BusConnection nowhere{QByteArray()};
    TrayItem item(nowhere, QString(), {});
    item.setMenu({action(QStringLiteral("Quit"))});
}

QTEST_GUILESS_MAIN(TrayItemTest)
#include "TrayItemTest.moc"
