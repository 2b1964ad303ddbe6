#include "config/NotchManager.h"

#include "support/FakeOverlays.h"
#include "support/FakePlatform.h"

#include <QAbstractItemModelTester>
#include <QJSEngine>
#include <QSignalSpy>
#include <QTest>

#include <functional>
#include <limits>

using namespace velmora;
using Zone = NotchManager::Zone;
using Widgets = std::array<NotchWidgetType, 5>;

Q_DECLARE_METATYPE(MemoryStore::Value)

namespace
{

using enum NotchWidgetType;

constexpr std::array<Zone, 5> zones{Zone::farLeft, Zone::left, Zone::center, Zone::right,
                                    Zone::farRight};
constexpr std::array zoneNames{"farLeft", "left", "center", "right", "farRight"};
constexpr Widgets neutralWidgets{none, media, none, none, clock};
constexpr Widgets minimalProfileWidgets{none, quote, clock, dayProgress, none};
constexpr Widgets defaultProfileWidgets{media, pomodoro, weather, systemMonitor, dropActions};

QString key(const char *zone, const char *suffix)
{
    return QLatin1String(zone) + QLatin1String(suffix);
}

QStringList widgetKeys()
{
    QStringList keys;
    for (const char *zone : zoneNames) {
        keys << key(zone, "Widget");
    }
    return keys;
}

QString text(const char *latin1)
{
    return QString::fromLatin1(latin1);
}

QStringList list(const char *commaSeparated)
{
    return text(commaSeparated).split(u',');
}

} // namespace

class NotchManagerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void servicesAreMadeInOrder();
    void firstLaunch();
    void storedProfilesLeaveTheWidgetsAlone();
    void storedSettingsAreRead();
    void garbageFallsBack_data();
    void garbageFallsBack();
    void strayIndexIsCorrectedInMemoryOnly();
    void brokenProfilesStayUntilTheNextSave_data();
    void brokenProfilesStayUntilTheNextSave();

    void everyAssignmentStoresAndRebuilds();
    void enabling();
    void overlaysOfAllScreens();

    void switchingRebuildsOnce();
    void indexesOutOfRangeDoNothing();
    void adding();
    void removing_data();
    void removing();
    void theLastProfileStays();
    void renaming();
    void viewsFollow();

private:
    NotchManager &launch();
    void storeProfiles() { m_platform->store.values[text("notchProfiles")] = storedProfiles(); }
    [[nodiscard]] QByteArray storedProfiles() const
    {
        return encodeProfiles(NotchProfile::builtIn()).value();
    }

    std::unique_ptr<FakePlatform> m_platform;
    FakeOverlays m_overlays;
    std::unique_ptr<NotchManager> m_manager;
};

void NotchManagerTest::init()
{
    m_platform = std::make_unique<FakePlatform>();
    m_platform->screens.add(QRectF(0, 0, 1920, 1080), text("A"));
}

void NotchManagerTest::cleanup()
{
    m_manager.reset();
    m_overlays = {};
}

/// A manager as it is when the application has come up, with nothing noted down yet.
NotchManager &NotchManagerTest::launch()
{
    m_manager = std::make_unique<NotchManager>(m_platform->roles, m_overlays.factory());
    m_manager->apply();
    m_overlays.events.clear();
    m_overlays.built.clear();
    m_platform->store.written.clear();
    return *m_manager;
}

void NotchManagerTest::servicesAreMadeInOrder()
{
    static QStringList asked;
    struct Media final : MediaRemote {
        std::optional<MediaTrack> track() override
        {
            asked << text("media");
            return std::nullopt;
        }
        void send(PlaybackCommand) override {}
    };
    struct Sound final : SoundOutput {
        std::optional<int> volumePercent() const override
        {
            asked << text("system");
            return std::nullopt;
        }
        void setVolumePercent(int) override {}
    };
    m_platform->roles.media = std::make_unique<Media>();
    m_platform->roles.sound = std::make_unique<Sound>();
    const NotchManager manager(m_platform->roles, m_overlays.factory());
    QCOMPARE(asked.mid(0, 2), list("media,system"));
}

void NotchManagerTest::firstLaunch()
{
    MemoryStore &store = m_platform->store;
    const NotchManager manager(m_platform->roles, m_overlays.factory());
    NotchSettings expected;
    expected.widgets = defaultProfileWidgets;
    QVERIFY(manager.settings() == expected);
    QVERIFY(manager.isEnabled());
    QVERIFY(manager.profiles() == NotchProfile::builtIn());
    QCOMPARE(manager.activeProfileIndex(), 0);
    QCOMPARE(store.written, widgetKeys());
    QCOMPARE(store.string(text("farRightWidget")), std::optional(text("dropActions")));
    QVERIFY(m_overlays.events.isEmpty()); // building the overlay is left to the caller
}

void NotchManagerTest::storedProfilesLeaveTheWidgetsAlone()
{
    storeProfiles();
    m_platform->store.setInteger(text("activeProfileIndex"), 2);
    m_platform->store.written.clear();
    const NotchManager manager(m_platform->roles, m_overlays.factory());
    QCOMPARE(manager.settings().widgets, neutralWidgets);
    QCOMPARE(manager.activeProfileIndex(), 2);
    QVERIFY(m_platform->store.written.isEmpty());
}

void NotchManagerTest::storedSettingsAreRead()
{
    storeProfiles();
    MemoryStore &store = m_platform->store;
    store.setBoolean(text("isEnabled"), false);
    store.setNumber(text("notchWidth"), 0);
    store.setNumber(text("notchHeight"), -4.5);
    store.setNumber(text("cornerRadius"), 1e9);
    store.setNumber(text("expandedTopPadding"), 3);
    NotchSettings expected{0, -4.5, 1e9, 3, {quote, todo, volume, network, calendar}, {}};
    for (const Zone zone : zones) {
        const auto index = static_cast<std::size_t>(zone);
        expected.zoneWidths.at(index) = static_cast<double>(index) - 1;
        store.setNumber(key(zoneNames.at(index), "ZoneWidth"), expected.zoneWidths.at(index));
        store.setString(key(zoneNames.at(index), "Widget"), rawValue(expected.widgets.at(index)));
    }
    store.written.clear();
    const NotchManager manager(m_platform->roles, m_overlays.factory());
    QVERIFY(manager.settings() == expected);
    QVERIFY(!manager.isEnabled());
    QVERIFY(store.written.isEmpty());
}

void NotchManagerTest::garbageFallsBack_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<MemoryStore::Value>("value");

    const auto rows = [](const QStringList &keys, const std::vector<MemoryStore::Value> &values) {
        for (const QString &key : keys) {
            for (std::size_t i = 0; i < values.size(); ++i) {
                QTest::addRow("%s, value %zu", qPrintable(key), i) << key << values.at(i);
            }
        }
    };
    rows({text("isEnabled")}, {text("no"), QByteArray("false")});
    QStringList numbers = list("notchWidth,notchHeight,cornerRadius,expandedTopPadding");
    for (const char *zone : zoneNames) {
        numbers << key(zone, "ZoneWidth");
    }
    rows(numbers, {true, text("12"), QByteArray("12")});
    rows(widgetKeys(),
         {true, 2.0, qint64{2}, text("Clock"), text("Empty"), QString(), QByteArray("todo")});
    rows({text("activeProfileIndex")}, {true, text("1"), QByteArray("1")});
}

void NotchManagerTest::garbageFallsBack()
{
    QFETCH(const QString, key);
    QFETCH(const MemoryStore::Value, value);
    storeProfiles();
    m_platform->store.values[key] = value;
    const NotchManager manager(m_platform->roles, m_overlays.factory());
    QVERIFY(manager.settings() == NotchSettings());
    QVERIFY(manager.isEnabled());
    QCOMPARE(manager.activeProfileIndex(), 0);
    QVERIFY(m_platform->store.values.at(key) == value);
}

void NotchManagerTest::strayIndexIsCorrectedInMemoryOnly()
{
    const QString activeKey = text("activeProfileIndex");
    storeProfiles();
    for (const qint64 stored :
         {qint64{4}, qint64{-1}, (qint64{1} << 32) + 1, std::numeric_limits<qint64>::min()}) {
        m_platform->store.setInteger(activeKey, stored);
        NotchManager &manager = launch();
        QCOMPARE(manager.activeProfileIndex(), 0);
        QCOMPARE(m_platform->store.integer(activeKey), stored);
        manager.saveProfiles();
        QCOMPARE(m_platform->store.integer(activeKey), 0);
    }
}

void NotchManagerTest::brokenProfilesStayUntilTheNextSave_data()
{
    QTest::addColumn<MemoryStore::Value>("stored");
    QByteArray incomplete = storedProfiles();
    incomplete.replace(incomplete.lastIndexOf("farRightWidget"), 3, "far");
    incomplete.replace(incomplete.lastIndexOf("farRightWidget"), 3, "FAR");
    QTest::newRow("incomplete") << MemoryStore::Value(incomplete);
    QTest::newRow("no JSON") << MemoryStore::Value(QByteArray("\xFF{"));
    QTest::newRow("empty list") << MemoryStore::Value(QByteArray("[]"));
    QTest::newRow("other type") << MemoryStore::Value(true);
}

void NotchManagerTest::brokenProfilesStayUntilTheNextSave()
{
    QFETCH(const MemoryStore::Value, stored);
    MemoryStore &store = m_platform->store;
    store.values[text("notchProfiles")] = stored;
    store.setString(text("leftWidget"), text("todo"));
    store.setNumber(text("notchWidth"), 321);
    NotchManager &manager = launch();
    QVERIFY(manager.profiles() == NotchProfile::builtIn());
    QCOMPARE(manager.settings().widgets, defaultProfileWidgets);
    QCOMPARE(manager.notchWidth(), 321.0);
    manager.switchProfile(1);
    manager.setWidget(Zone::left, calendar);
    QVERIFY(store.values.at(text("notchProfiles")) == stored);
    manager.renameProfile(0, text("Mine"));
    QVERIFY(decodeProfiles(store.data(text("notchProfiles")).value()) == manager.profiles());
}

void NotchManagerTest::everyAssignmentStoresAndRebuilds()
{
    NotchManager &manager = launch();
    MemoryStore &store = m_platform->store;
    const QSignalSpy changes(&manager, &NotchManager::settingsChanged);
    NotchSettings expected = manager.settings();
    // Each twice the same: an assignment counts, not a difference. Nothing is limited.
    const auto assign = [&](const QString &key, const MemoryStore::Value &value,
                            const std::function<void()> &set) {
        for (int i = 0; i < 2; ++i) {
            set();
            QCOMPARE(std::exchange(store.written, {}), QStringList(key));
            QVERIFY(store.values.at(key) == value);
            QCOMPARE(m_overlays.takeEvents(), list("close A,free A,make A,show A"));
            QVERIFY(m_overlays.built.back() == expected);
        }
    };
    double value = 0;
    const std::vector<std::pair<const char *, double NotchSettings::*>> sizes{
        {"notchWidth", &NotchSettings::notchWidth},
        {"notchHeight", &NotchSettings::notchHeight},
        {"cornerRadius", &NotchSettings::cornerRadius},
        {"expandedTopPadding", &NotchSettings::expandedTopPadding}};
    for (const auto &size : sizes) {
        expected.*size.second = value;
        assign(text(size.first), value, [&] { manager.setProperty(size.first, value); });
        QCOMPARE(manager.property(size.first).toDouble(), value);
        value -= 7.25;
    }
    for (const Zone zone : zones) {
        const auto index = static_cast<std::size_t>(zone);
        for (const double weight : {0.0, -2.5}) {
            expected.zoneWidths.at(index) = weight;
            assign(key(zoneNames.at(index), "ZoneWidth"), weight,
                   [&] { manager.setZoneWidth(zone, weight); });
        }
        expected.widgets.at(index) = quickToggle;
        assign(key(zoneNames.at(index), "Widget"), text("quickToggle"),
               [&] { manager.setWidget(zone, quickToggle); });
    }
    QCOMPARE(changes.size(), 2 * (4 + 3 * 5));
    QVERIFY(manager.settings() == expected);
    QVERIFY(manager.profiles() == NotchProfile::builtIn()); // the active one keeps what it had
}

void NotchManagerTest::enabling()
{
    NotchManager &manager = launch();
    const auto timers = m_platform->clock.runningTimers();
    manager.setEnabled(false);
    QVERIFY(manager.controllers().empty());
    QCOMPARE(m_overlays.takeEvents(), list("close A,free A"));
    QCOMPARE(m_platform->clock.runningTimers(), timers); // the services go on
    manager.setNotchWidth(300);
    manager.switchProfile(1);
    QVERIFY(m_overlays.events.isEmpty());
    manager.setEnabled(true);
    QCOMPARE(m_overlays.takeEvents(), list("make A,show A"));
    QCOMPARE(m_overlays.built.back().notchWidth, 300.0);
    manager.setEnabled(true);
    QCOMPARE(m_overlays.takeEvents(), list("close A,free A,make A,show A"));
    QCOMPARE(m_platform->store.boolean(text("isEnabled")), std::optional(true));
}

void NotchManagerTest::overlaysOfAllScreens()
{
    m_platform->screens.add(QRectF(1920, 0, 1280, 720), text("B"));
    NotchManager &manager = launch();
    manager.apply();
    QCOMPARE(m_overlays.takeEvents(),
             list("close A,close B,free A,free B,make A,show A,make B,show B"));
    QCOMPARE(m_overlays.built.size(), std::size_t{2});
    QVERIFY(m_overlays.built.at(0) == manager.settings());
    QVERIFY(m_overlays.built.at(1) == manager.settings());

    for (const auto &screen : m_platform->screens.all()) {
        m_platform->screens.remove(screen.get());
    }
    manager.apply();
    QVERIFY(manager.controllers().empty());
    m_platform->screens.add(QRectF(0, 0, 640, 480), text("C"));
    manager.apply();
    m_overlays.events.clear();
    m_manager.reset();
    QCOMPARE(m_overlays.events, list("close C,free C"));
}

void NotchManagerTest::switchingRebuildsOnce()
{
    NotchManager &manager = launch();
    NotchSettings expected = manager.settings();
    expected.widgets = minimalProfileWidgets;
    for (int i = 0; i < 2; ++i) { // the one that is active already, too
        const QSignalSpy changed(&manager, &NotchManager::profilesChanged);
        manager.switchProfile(3);
        QCOMPARE(m_overlays.takeEvents(), list("close A,free A,make A,show A"));
        QVERIFY(m_overlays.built.back() == expected);
        QCOMPARE(manager.activeProfileIndex(), 3);
        QCOMPARE(changed.size(), 1);
        QCOMPARE(std::exchange(m_platform->store.written, {}),
                 QStringList(text("activeProfileIndex")) + widgetKeys());
    }
    QCOMPARE(m_platform->store.integer(text("activeProfileIndex")), 3);
    QCOMPARE(m_platform->store.string(text("leftWidget")), std::optional(text("quote")));
    manager.setWidget(Zone::left, todo); // a single assignment rebuilds again
    QCOMPARE(m_overlays.events.size(), 4);
}

void NotchManagerTest::indexesOutOfRangeDoNothing()
{
    NotchManager &manager = launch();
    const QSignalSpy changed(&manager, &NotchManager::profilesChanged);
    for (const int index :
         {-1, 4, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        manager.switchProfile(index);
        manager.removeProfile(index);
        manager.renameProfile(index, text("x"));
    }
    QVERIFY(changed.isEmpty());
    QVERIFY(m_overlays.events.isEmpty());
    QVERIFY(m_platform->store.written.isEmpty());
    QVERIFY(manager.profiles() == NotchProfile::builtIn());
    QCOMPARE(manager.settings().widgets, defaultProfileWidgets);
}

void NotchManagerTest::adding()
{
    NotchManager &manager = launch();
    manager.setWidget(Zone::right, bluetooth);
    m_overlays.events.clear();
    manager.addProfile(text("Mine"));
    manager.addProfile(text("Mine")); // names need not differ
    QVERIFY(m_overlays.events.isEmpty());
    QCOMPARE(manager.profiles().size(), std::size_t{6});
    QCOMPARE(manager.activeProfileIndex(), 5);
    const NotchProfile &added = manager.profiles().back();
    QVERIFY(added == (NotchProfile{added.id, text("Mine"), media, pomodoro, weather, bluetooth,
                                   dropActions}));
    QVERIFY(!added.id.isNull() && added.id != manager.profiles().at(4).id);

    // The next launch finds all of it, and now leaves the widgets as they are.
    const auto profiles = manager.profiles();
    m_platform->store.setString(text("rightWidget"), text("todo"));
    NotchManager &next = launch();
    QVERIFY(next.profiles() == profiles);
    QCOMPARE(next.activeProfileIndex(), 5);
    QCOMPARE(next.widget(Zone::right), todo);
}

void NotchManagerTest::removing_data()
{
    QTest::addColumn<int>("active");
    QTest::addColumn<int>("removed");
    QTest::addColumn<int>("expected");
    QTest::newRow("the last, active") << 3 << 3 << 2;
    QTest::newRow("the first, active") << 0 << 0 << 0;
    QTest::newRow("behind the active one") << 1 << 2 << 1;
    QTest::newRow("before the active one") << 2 << 0 << 2; // the number stays, not the profile
    QTest::newRow("before the last, active") << 3 << 0 << 2;
}

void NotchManagerTest::removing()
{
    QFETCH(const int, active);
    QFETCH(const int, removed);
    QFETCH(const int, expected);
    NotchManager &manager = launch();
    manager.switchProfile(active);
    const Widgets onScreen = manager.settings().widgets;
    m_overlays.events.clear();
    auto rest = manager.profiles();
    rest.erase(rest.begin() + removed);

    manager.removeProfile(removed);
    QVERIFY(manager.profiles() == rest);
    QCOMPARE(manager.activeProfileIndex(), expected);
    QCOMPARE(manager.settings().widgets, onScreen);
    QVERIFY(m_overlays.events.isEmpty());
    QVERIFY(decodeProfiles(m_platform->store.data(text("notchProfiles")).value()) == rest);
    QCOMPARE(m_platform->store.integer(text("activeProfileIndex")), expected);
}

void NotchManagerTest::theLastProfileStays()
{
    NotchManager &manager = launch();
    for (int i = 0; i < 3; ++i) {
        manager.removeProfile(0);
    }
    m_platform->store.written.clear();
    manager.removeProfile(0);
    QCOMPARE(manager.profiles().size(), std::size_t{1});
    QCOMPARE(manager.profiles().front().name, text("Minimal"));
    QVERIFY(m_platform->store.written.isEmpty());
}

void NotchManagerTest::renaming()
{
    NotchManager &manager = launch();
    const QSignalSpy changed(&manager, &NotchManager::profilesChanged);
    auto expected = manager.profiles();
    expected.at(2).name = QString();
    manager.renameProfile(2, QString());
    QVERIFY(manager.profiles() == expected);
    QVERIFY(decodeProfiles(m_platform->store.data(text("notchProfiles")).value()) == expected);
    QCOMPARE(changed.size(), 1);
    QVERIFY(m_overlays.events.isEmpty());
}

/// As a view sees it, and changes it.
void NotchManagerTest::viewsFollow()
{
    NotchManager &manager = launch();
    QJSEngine engine;
    engine.globalObject().setProperty(text("manager"), engine.newQObject(&manager));
    QJSEngine::setObjectOwnership(&manager, QJSEngine::CppOwnership);
    const auto run = [&engine](const char *script) {
        return engine.evaluate(text(script)).toString();
    };
    QSignalSpy changed(&manager, &NotchManager::settingsChanged);
    run("manager.setZoneWidth(1, 2.5); manager.setWidget(4, 'todo'); manager.setWidget(0, 'none!');"
        "manager.cornerRadius = 7");
    QCOMPARE(changed.size(), 3);
    QCOMPARE(run("manager.zoneWidths.join()"), text("1,2.5,1,1,1"));
    QCOMPARE(run("manager.widgets.join()"), text("media,pomodoro,weather,systemMonitor,todo"));
    QCOMPARE(manager.widget(Zone::farRight), todo);
    QCOMPARE(m_overlays.built.size(), 3U);

    NotchProfileList &profiles = *manager.profileList();
    const QAbstractItemModelTester tester(&profiles);
    const auto shown = [&profiles] {
        QStringList names;
        for (int row = 0; row < profiles.rowCount(); ++row) {
            const QModelIndex index = profiles.index(row);
            const bool isActive = index.data(NotchProfileList::IsActiveRole).toBool();
            names << index.data(NotchProfileList::NameRole).toString() + text(isActive ? "*" : "");
        }
        return names;
    };
    QSignalSpy renamed(&profiles, &NotchProfileList::dataChanged);
    QSignalSpy inserted(&profiles, &NotchProfileList::rowsInserted);
    QSignalSpy removed(&profiles, &NotchProfileList::rowsRemoved);
    run("manager.renameProfile(1, 'Work')");
    QCOMPARE(renamed.size(), 1);
    run("manager.addProfile('Mine'); manager.removeProfile(0); manager.switchProfile(0)");
    QCOMPARE(inserted.size() + removed.size(), 2);
    QCOMPARE(shown(), list("Work*,System,Minimal,Mine"));
}

QTEST_GUILESS_MAIN(NotchManagerTest)
#include "NotchManagerTest.moc"
