#include "app/AppDelegate.h"

#include "support/FakeOverlays.h"
#include "support/FakePlatform.h"

#include <QTest>

using namespace velmora;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{

QStringList list(const char *commaSeparated)
{
    return QString::fromLatin1(commaSeparated).split(u',');
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
        events << u"menu"_s;
        menu = newMenu;
    }
    [[nodiscard]] const Menu &profiles() const { return menu.at(2).submenu; }
    /// A copy: choosing an item replaces the menu that it is part of.
    void choose(int position) const { std::function(menu.at(position).action)(); }
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

/// The lines of a menu: title, key and mark.
QStringList described(const Menu &menu)
{
    QStringList lines;
    for (const MenuItem &item : menu) {
        const char *const marks[] = {"", "-", "+"};
        lines << (item.kind == MenuItem::Kind::Separator ? u"---"_s : item.title) +
                     item.keyEquivalent + QLatin1String(marks[static_cast<int>(item.mark)]) +
                     (item.isChoice ? u" of several"_s : QString());
    }
    return lines;
}

const QString loginKey = u"hasPromptedLoginItem"_s;
const QString permissionKey = u"hasRequestedPermissions"_s;

} // namespace

class AppDelegateTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void launching();
    void toggling();
    void switchingProfiles();
    void quitting();
    void screenChanges();
    void questionsArePutOnce();

private:
    /// The events of the launch are forgotten.
    void launch();
    [[nodiscard]] QStringList requests() const
    {
        return m_platform->calendar.questions + m_platform->reminders.questions;
    }

    std::unique_ptr<FakePlatform> m_platform;
    FakeLoginItem *m_loginItem = nullptr;
    FakeOverlays m_overlays;
    FakeStatusItem m_tray{m_overlays.events};
    FakeStatusItem m_overlayMenu{m_overlays.events};
    std::function<void()> m_accept; ///< of the login question, as last put
    int m_questions = 0;
    int m_terminations = 0;
    std::unique_ptr<AppDelegate> m_delegate;
};

void AppDelegateTest::init()
{
    m_platform = std::make_unique<FakePlatform>();
    auto loginItem = std::make_unique<FakeLoginItem>();
    m_loginItem = loginItem.get();
    m_platform->roles.loginItem = std::move(loginItem);
    m_platform->screens.add(QRectF(0, 0, 1920, 1080), u"A"_s);
    m_questions = m_terminations = 0;
}

void AppDelegateTest::cleanup()
{
    m_delegate.reset();
    m_overlays.events.clear();
}

void AppDelegateTest::launch()
{
    AppActions actions;
    actions.askForLoginItem = [this](const std::function<void()> &accepted) {
        ++m_questions;
        m_accept = accepted;
    };
    actions.terminate = [this] { ++m_terminations; };
    m_delegate = std::make_unique<AppDelegate>(m_platform->roles, m_overlays.factory(),
                                               std::vector<StatusItem *>{&m_tray, &m_overlayMenu},
                                               std::move(actions));
    m_delegate->applicationDidFinishLaunching();
    QCOMPARE(m_overlays.takeEvents(), list("menu,menu,make A,show A"));
}

void AppDelegateTest::launching()
{
    QTest::ignoreMessage(QtInfoMsg, "applicationDidFinishLaunching");
    launch();
    for (const FakeStatusItem *item : {&m_tray, &m_overlayMenu}) {
        QCOMPARE(described(item->menu),
                 (QStringList{u"Enable Notch+"_s, u"---"_s, u"Profile"_s, u"---"_s,
                              u"Preferences\u2026,"_s, u"---"_s, u"Quit Velmoraq"_s}));
        QCOMPARE(described(item->profiles()),
                 list("Default+ of several,Focus- of several,System- of several,"
                      "Minimal- of several"));
        QCOMPARE(item->profiles().at(3).tag, 3);
    }
    m_tray.choose(4); // there are no preferences yet: nothing may change
    m_platform->clock.advance(1min);
    QVERIFY(m_overlays.events.isEmpty());
}

void AppDelegateTest::toggling()
{
    launch();
    QTest::ignoreMessage(QtInfoMsg, "toggleNotch \u2192 disabled");
    m_tray.choose(0);
    QCOMPARE(m_overlays.takeEvents(), list("menu,menu,close A,free A"));
    QCOMPARE(described(m_tray.menu).front(), u"Enable Notch-"_s);

    QTest::ignoreMessage(QtInfoMsg, "toggleNotch \u2192 enabled");
    m_overlayMenu.choose(0);
    QCOMPARE(m_overlays.takeEvents(), list("menu,menu,make A,show A"));
    QCOMPARE(described(m_tray.menu).front(), u"Enable Notch+"_s);
}

void AppDelegateTest::switchingProfiles()
{
    launch();
    for (int i = 0; i < 2; ++i) { // the active one rebuilds as well
        QTest::ignoreMessage(QtInfoMsg, "switchProfile \u2192 index 2");
        std::function(m_tray.profiles().at(2).action)();
        QCOMPARE(m_overlays.takeEvents(), list("menu,menu,close A,free A,make A,show A"));
        QCOMPARE(described(m_overlayMenu.profiles()),
                 list("Default- of several,Focus- of several,System+ of several,"
                      "Minimal- of several"));
    }

    // The menu follows the manager; an item may be chosen that is gone by now.
    const std::function<void()> gone = m_tray.profiles().at(3).action;
    m_delegate->notchManager()->removeProfile(3);
    m_delegate->notchManager()->renameProfile(2, u"Work"_s);
    m_overlays.events.clear();
    gone();
    QVERIFY(m_overlays.events.isEmpty());
    QCOMPARE(described(m_tray.profiles()).back(), u"Work+ of several"_s);
}

void AppDelegateTest::quitting()
{
    launch();
    QTest::ignoreMessage(QtInfoMsg, "quitApp");
    m_tray.choose(6);
    QCOMPARE(m_terminations, 1);
    m_delegate.reset();
    QCOMPARE(m_overlays.takeEvents(), list("close A,free A"));

    // Questions that were not put by then are never put.
    m_platform->clock.advance(1min);
    launch();
    m_platform->clock.advance(1min);
    QCOMPARE(m_questions, 0);
    QVERIFY(!requests().contains(u"request"_s));
}

void AppDelegateTest::screenChanges()
{
    launch();
    QTest::ignoreMessage(QtInfoMsg, "screensDidChange \u2014 reapplying notch");
    m_platform->screens.add(QRectF(1920, 0, 800, 600), u"B"_s);
    QCOMPARE(m_overlays.takeEvents(), list("close A,free A,make A,show A,make B,show B"));
    for (const auto &screen : m_platform->screens.all()) {
        m_platform->screens.remove(screen.get());
    }
    QCOMPARE(m_overlays.takeEvents().last(), u"free B"_s);
    m_tray.choose(0); // and a menu that works without any screen
    m_delegate.reset();
    m_platform->screens.add();
    QVERIFY(!m_overlays.events.contains(u"make Fake"_s));
}

void AppDelegateTest::questionsArePutOnce()
{
    launch();
    // Noted down before they are put, after the settings of the manager.
    QCOMPARE(m_platform->store.written.mid(5), QStringList({loginKey, permissionKey}));
    QCOMPARE(m_platform->store.boolean(loginKey), std::optional(true));
    QCOMPARE(m_platform->store.boolean(permissionKey), std::optional(true));
    m_platform->clock.advance(499ms);
    QCOMPARE(m_questions, 0);
    m_platform->clock.advance(1ms);
    QCOMPARE(m_questions, 1);
    m_platform->clock.advance(1499ms);
    QCOMPARE(requests(), QStringList());
    m_platform->clock.advance(1ms);
    QCOMPARE(requests(), QStringList({u"request"_s, u"request"_s}));
    m_platform->calendar.answers.give();
    m_platform->reminders.answers.give();
    m_platform->clock.advance(1h);
    QCOMPARE(m_loginItem->registrations, 0); // asked, and not answered
    QTest::ignoreMessage(QtInfoMsg, "Registered as login item");
    m_accept();
    m_loginItem->error = u"no space left"_s;
    QTest::ignoreMessage(QtCriticalMsg, "Failed to register login item: no space left");
    m_accept();
    QCOMPARE(m_loginItem->registrations, 2);

    m_delegate.reset();
    m_overlays.events.clear();
    launch();
    m_platform->clock.advance(5s);
    QCOMPARE(m_questions, 1);
    QCOMPARE(requests().count(u"check"_s), 2); // silently
    QCOMPARE(requests().count(u"request"_s), 2);
}

QTEST_GUILESS_MAIN(AppDelegateTest)
#include "AppDelegateTest.moc"
