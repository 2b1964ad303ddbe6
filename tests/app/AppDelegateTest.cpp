#include "app/AppDelegate.h"

#include "support/FakeOverlays.h"
#include "support/FakePlatform.h"

#include <QTest>

using namespace velmora;
using namespace std::chrono_literals;

namespace
{

QString text(const char *latin1)
{
    return QString::fromLatin1(latin1);
}

QStringList list(const char *commaSeparated)
{
    return text(commaSeparated).split(u',');
}

/// Keeps the menu, and tells of each new one.
struct FakeStatusItem final : StatusItem {
    explicit FakeStatusItem(QStringList &log)
        : events(log)
    {
    }

    QStringList &events;
    Menu menu;

    void setMenu(const Menu &newMenu) override
    {
        events << text("menu");
        menu = newMenu;
    }
    [[nodiscard]] const Menu &profiles() const { return menu.at(2).submenu; }
    /// A copy: choosing an item replaces the menu that it is part of.
    void choose(int position) const { std::function(menu.at(position).action)(); }
    void chooseProfile(int position) const { std::function(profiles().at(position).action)(); }
};

struct FakeLoginItem final : LoginItem {
    std::optional<QString> error;
    int registrations = 0;

    std::optional<QString> registerItem() override
    {
        ++registrations;
        return error;
    }
};

/// "kind|title|tag|mark|key", one a line.
QStringList described(const Menu &menu)
{
    QStringList lines;
    for (const MenuItem &item : menu) {
        const char *const kinds[] = {"action", "separator", "submenu"};
        const char *const marks[] = {"none", "off", "on"};
        lines << QStringLiteral("%1|%2|%3|%4%5|%6")
                     .arg(text(kinds[static_cast<int>(item.kind)]), item.title)
                     .arg(item.tag)
                     .arg(text(marks[static_cast<int>(item.mark)]),
                          item.isChoice ? text(" of several") : QString(), item.keyEquivalent);
    }
    return lines;
}

/// The marks of a menu as one line of + and -.
QString marks(const Menu &menu)
{
    QString line;
    for (const MenuItem &item : menu) {
        line += item.mark == MenuItem::Mark::On ? u'+' : u'-';
    }
    return line;
}

QString loginKey()
{
    return text("hasPromptedLoginItem");
}
QString permissionKey()
{
    return text("hasRequestedPermissions");
}

} // namespace

class AppDelegateTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void launchOrder();
    void menuOfAFirstLaunch();
    void toggling();
    void switchingProfiles();
    void menuFollowsTheManager();
    void quitting();
    void screenChanges();

    void questionsArePutOnce();
    void loginItem_data();
    void loginItem();
    void quittingBeforeTheQuestions();

private:
    void launch();

    std::unique_ptr<FakePlatform> m_platform;
    FakeLoginItem *m_loginItem = nullptr;
    FakeOverlays m_overlays;
    FakeStatusItem m_tray{m_overlays.events};
    FakeStatusItem m_overlayMenu{m_overlays.events};
    std::function<void()> m_accept; ///< of the login question, as last put
    int m_questions = 0;
    int m_requests = 0;
    int m_terminations = 0;
    std::unique_ptr<AppDelegate> m_delegate;
};

void AppDelegateTest::init()
{
    m_platform = std::make_unique<FakePlatform>();
    auto loginItem = std::make_unique<FakeLoginItem>();
    m_loginItem = loginItem.get();
    m_platform->roles.loginItem = std::move(loginItem);
    m_platform->screens.add(QRectF(0, 0, 1920, 1080), text("A"));
    m_questions = m_requests = m_terminations = 0;
    m_accept = nullptr;
}

void AppDelegateTest::cleanup()
{
    m_delegate.reset();
    m_overlays.events.clear();
    m_overlays.built.clear();
}

void AppDelegateTest::launch()
{
    AppActions actions;
    actions.askForLoginItem = [this](const std::function<void()> &accepted) {
        ++m_questions;
        m_accept = accepted;
    };
    actions.permissionRequests = {[this] { m_requests += 1; }, [this] { m_requests += 100; }};
    actions.terminate = [this] { ++m_terminations; };
    m_delegate = std::make_unique<AppDelegate>(m_platform->roles, m_overlays.factory(),
                                               std::vector<StatusItem *>{&m_tray, &m_overlayMenu},
                                               std::move(actions));
    QVERIFY(m_delegate->notchManager() == nullptr);
    m_delegate->applicationDidFinishLaunching();
}

void AppDelegateTest::launchOrder()
{
    QTest::ignoreMessage(QtInfoMsg, "applicationDidFinishLaunching");
    launch();
    QCOMPARE(m_overlays.takeEvents(), list("menu,menu,make A,show A"));
    // The settings of the manager first, then the two questions, noted down before they are put.
    QCOMPARE(m_platform->store.written.mid(5), QStringList({loginKey(), permissionKey()}));
    m_platform->clock.advance(1min);
    QVERIFY(m_overlays.events.isEmpty());
}

void AppDelegateTest::menuOfAFirstLaunch()
{
    launch();
    for (const FakeStatusItem *item : {&m_tray, &m_overlayMenu}) {
        QCOMPARE(described(item->menu),
                 QStringList({QStringLiteral("action|Enable Notch|0|on|"),
                              QStringLiteral("separator||0|none|"),
                              QStringLiteral("submenu|Profile|0|none|"),
                              QStringLiteral("separator||0|none|"),
                              QStringLiteral("action|Preferences\u2026|0|none|,"),
                              QStringLiteral("separator||0|none|"),
                              QStringLiteral("action|Quit Velmora|0|none|q")}));
        QCOMPARE(described(item->profiles()),
                 list("action|Default|0|on of several|,action|Focus|1|off of several|,"
                      "action|System|2|off of several|,action|Minimal|3|off of several|"));
        for (const int position : {0, 4, 6}) {
            QVERIFY(item->menu.at(static_cast<std::size_t>(position)).action);
        }
    }
    m_overlays.events.clear();
    m_tray.choose(4); // there are no preferences yet: nothing may change
    QVERIFY(m_overlays.events.isEmpty());
    QCOMPARE(m_terminations, 0);
}

void AppDelegateTest::toggling()
{
    launch();
    m_overlays.events.clear();
    QTest::ignoreMessage(QtInfoMsg, "toggleNotch \u2192 disabled");
    m_tray.choose(0);
    QCOMPARE(m_overlays.takeEvents(), list("menu,menu,close A,free A"));
    QCOMPARE(m_platform->store.boolean(text("isEnabled")), std::optional(false));
    QCOMPARE(m_tray.menu.front().mark, MenuItem::Mark::Off);
    QCOMPARE(m_overlayMenu.menu.front().mark, MenuItem::Mark::Off);

    QTest::ignoreMessage(QtInfoMsg, "toggleNotch \u2192 enabled");
    m_overlayMenu.choose(0);
    QCOMPARE(m_overlays.takeEvents(), list("menu,menu,make A,show A"));
    QCOMPARE(m_platform->store.boolean(text("isEnabled")), std::optional(true));
    QCOMPARE(m_tray.menu.front().mark, MenuItem::Mark::On);
    QVERIFY(m_delegate->notchManager()->isEnabled());
}

void AppDelegateTest::switchingProfiles()
{
    launch();
    m_overlays.events.clear();
    for (int i = 0; i < 2; ++i) { // the active one rebuilds as well
        QTest::ignoreMessage(QtInfoMsg, "switchProfile \u2192 index 2");
        m_tray.chooseProfile(2);
        QCOMPARE(m_overlays.takeEvents(), list("menu,menu,close A,free A,make A,show A"));
        QCOMPARE(marks(m_overlayMenu.profiles()), text("--+-"));
    }
    QCOMPARE(m_platform->store.integer(text("activeProfileIndex")), 2);

    // An item of a profile that is gone by now.
    const std::function<void()> gone = m_tray.profiles().at(3).action;
    m_delegate->notchManager()->removeProfile(3);
    m_overlays.events.clear();
    gone();
    QVERIFY(m_overlays.events.isEmpty());
    QCOMPARE(marks(m_tray.profiles()), text("--+"));
}

void AppDelegateTest::menuFollowsTheManager()
{
    launch();
    NotchManager &manager = *m_delegate->notchManager();
    for (const FakeStatusItem *item : {&m_tray, &m_overlayMenu}) {
        manager.addProfile(text("Mine"));
        QCOMPARE(item->profiles().back().title, text("Mine"));
        QCOMPARE(item->profiles().back().mark, MenuItem::Mark::On);
        manager.renameProfile(1, text("Work"));
        QCOMPARE(item->profiles().at(1).title, text("Work"));
        manager.removeProfile(0);
        QCOMPARE(item->profiles().front().title, text("Work"));
        manager.setEnabled(false);
        QCOMPARE(item->menu.front().mark, MenuItem::Mark::Off);
        manager.setEnabled(true);
        manager.renameProfile(1, text("another"));
    }
}

void AppDelegateTest::quitting()
{
    launch();
    QTest::ignoreMessage(QtInfoMsg, "quitApp");
    m_tray.choose(6);
    QCOMPARE(m_terminations, 1);
    m_overlays.events.clear();
    m_delegate.reset();
    QCOMPARE(m_overlays.takeEvents(), list("close A,free A"));
}

void AppDelegateTest::screenChanges()
{
    launch();
    m_overlays.events.clear();
    QTest::ignoreMessage(QtInfoMsg, "screensDidChange \u2014 reapplying notch");
    const auto second = m_platform->screens.add(QRectF(1920, 0, 800, 600), text("B"));
    QCOMPARE(m_overlays.takeEvents(), list("close A,free A,make A,show A,make B,show B"));
    m_platform->screens.remove(second.get());
    QCOMPARE(m_overlays.takeEvents(), list("close A,close B,free A,free B,make A,show A"));
    m_platform->screens.remove(m_platform->screens.all().front().get());
    QCOMPARE(m_overlays.takeEvents(), list("close A,free A"));
    m_tray.choose(0); // and a menu that works without any screen
    m_delegate.reset();
    m_platform->screens.add();
    QVERIFY(!m_overlays.events.contains(text("make Fake")));
}

void AppDelegateTest::questionsArePutOnce()
{
    launch();
    QCOMPARE(m_platform->store.boolean(loginKey()), std::optional(true));
    QCOMPARE(m_platform->store.boolean(permissionKey()), std::optional(true));
    m_platform->clock.advance(499ms);
    QCOMPARE(m_questions, 0);
    m_platform->clock.advance(1ms);
    QCOMPARE(m_questions, 1);
    m_platform->clock.advance(1499ms);
    QCOMPARE(m_requests, 0);
    m_platform->clock.advance(1ms);
    QCOMPARE(m_requests, 101); // each of them, once
    m_platform->clock.advance(1h);
    QCOMPARE(m_loginItem->registrations, 0); // asked, and not answered

    m_delegate.reset();
    m_platform->store.written.clear();
    launch();
    m_platform->clock.advance(1h);
    QCOMPARE(m_questions, 1);
    QCOMPARE(m_requests, 101);
    QVERIFY(!m_platform->store.written.contains(loginKey()));
    QVERIFY(!m_platform->store.written.contains(permissionKey()));
}

void AppDelegateTest::loginItem_data()
{
    QTest::addColumn<bool>("works");
    QTest::newRow("registered") << true;
    QTest::newRow("refused") << false;
}

void AppDelegateTest::loginItem()
{
    QFETCH(const bool, works);
    if (!works) {
        m_loginItem->error = QStringLiteral("no space left");
    }
    launch();
    m_platform->clock.advance(500ms);
    QVERIFY(m_accept);
    if (works) {
        QTest::ignoreMessage(QtInfoMsg, "Registered as login item");
    } else {
        QTest::ignoreMessage(QtCriticalMsg, "Failed to register login item: no space left");
    }
    m_accept();
    QCOMPARE(m_loginItem->registrations, 1);
}

void AppDelegateTest::quittingBeforeTheQuestions()
{
    launch();
    m_platform->clock.advance(100ms);
    m_delegate.reset();
    m_platform->clock.advance(1min);
    QCOMPARE(m_questions + m_requests, 0);
    launch();
    m_platform->clock.advance(1min);
    QCOMPARE(m_questions + m_requests, 0);
}

QTEST_GUILESS_MAIN(AppDelegateTest)
#include "AppDelegateTest.moc"
