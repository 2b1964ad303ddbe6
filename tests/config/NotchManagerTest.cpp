#include "config/NotchManager.h"

#include "support/FakeOverlays.h"
#include "support/FakePlatform.h"

#include <QAbstractItemModelTester>
#include <QJSEngine>
#include <QSignalSpy>
#include <QTest>

#include <functional>

using namespace velmora;
using namespace Qt::StringLiterals;
using Zone = NotchManager::Zone;

namespace
{

using enum NotchWidgetType;

constexpr ZoneWidgets defaultProfileWidgets{media, pomodoro, weather, systemMonitor, dropActions};

/// The stored keys are a file format.
const QStringList widgetKeyList{u"farLeftWidget"_s, u"leftWidget"_s, u"centerWidget"_s,
                                u"rightWidget"_s, u"farRightWidget"_s};
const QStringList zoneWidthKeyList{u"farLeftZoneWidth"_s, u"leftZoneWidth"_s, u"centerZoneWidth"_s,
                                   u"rightZoneWidth"_s, u"farRightZoneWidth"_s};
const QString profilesKey = u"notchProfiles"_s;
const QString activeKey = u"activeProfileIndex"_s;

const QStringList rebuilt{u"close A"_s, u"free A"_s, u"make A"_s, u"show A"_s};

} // namespace

class NotchManagerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void servicesAreMadeInOrder();
    void firstLaunch();
    void garbageFallsBack();
    void strayIndexes();
    void brokenProfilesStayUntilTheNextSave();
    void everyAssignmentStoresAndRebuilds();
    void overlaysComeAndGo();
    void switchingRebuildsOnce();
    void adding();
    void removing();
    void viewsFollow();

private:
    NotchManager &launch();
    void storeProfiles() { m_store->setData(profilesKey, encodeProfiles(NotchProfile::builtIn())); }
    [[nodiscard]] bool isStored(const std::vector<NotchProfile> &profiles) const
    {
        return decodeProfiles(m_store->data(profilesKey).value()) == profiles;
    }

    std::unique_ptr<FakePlatform> m_platform;
    MemoryStore *m_store = nullptr;
    FakeOverlays m_overlays;
    std::unique_ptr<NotchManager> m_manager;
};

void NotchManagerTest::init()
{
    m_platform = std::make_unique<FakePlatform>();
    m_platform->screens.add(QRectF(0, 0, 1920, 1080), u"A"_s);
    m_store = &m_platform->store;
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
    m_store->written.clear();
    return *m_manager;
}

void NotchManagerTest::servicesAreMadeInOrder()
{
    struct Sound final : SoundOutput {
        const FakeMediaRemote *media = nullptr;
        std::optional<int> volumePercent() const override { return media->questions > 0 ? 70 : 20; }
        void setVolumePercent(int) override {}
    };
    auto sound = std::make_unique<Sound>();
    sound->media = &m_platform->media;
    m_platform->roles.sound = std::move(sound);
    NotchManager manager(m_platform->roles, m_overlays.factory());
    QCOMPARE(manager.services().systemMonitor()->volume(), 0.7F);
}

void NotchManagerTest::firstLaunch()
{
    const NotchManager manager(m_platform->roles, m_overlays.factory());
    NotchSettings expected;
    expected.widgets = defaultProfileWidgets;
    QVERIFY(manager.settings() == expected);
    QVERIFY(manager.isEnabled());
    QVERIFY(manager.profiles() == NotchProfile::builtIn());
    QCOMPARE(manager.activeProfileIndex(), 0);
    QCOMPARE(m_store->written, widgetKeyList);
    QCOMPARE(m_store->string(u"farRightWidget"_s), std::optional(u"dropActions"_s));
    QVERIFY(m_overlays.events.isEmpty()); // building the overlay is left to the caller
}

void NotchManagerTest::garbageFallsBack()
{
    storeProfiles();
    for (const MemoryStore::Value &value :
         std::vector<MemoryStore::Value>{true, u"Clock"_s, u"Empty"_s, QString()}) {
        for (const QString &key : QStringList{u"isEnabled"_s, u"notchWidth"_s, activeKey} +
                                      zoneWidthKeyList + widgetKeyList) {
            m_store->values[key] = value;
        }
        const auto before = m_store->values;
        const NotchManager manager(m_platform->roles, m_overlays.factory());
        QVERIFY(manager.settings() == NotchSettings() && manager.isEnabled());
        QCOMPARE(manager.activeProfileIndex(), 0);
        QVERIFY(m_store->values == before);
    }
}

void NotchManagerTest::strayIndexes()
{
    storeProfiles();
    for (const qint64 stray : {qint64{4}, qint64{-1}, (qint64{1} << 32) + 1}) {
        m_store->setInteger(activeKey, stray);
        NotchManager &manager = launch();
        QCOMPARE(manager.activeProfileIndex(), 0); // in memory only
        const QSignalSpy changed(&manager, &NotchManager::profilesChanged);
        const int index = int(qBound(qint64{-1}, stray, qint64{4}));
        manager.switchProfile(index);
        manager.removeProfile(index);
        manager.renameProfile(index, u"x"_s);
        QVERIFY(changed.isEmpty() && m_overlays.events.isEmpty() && m_store->written.isEmpty());
        manager.saveProfiles();
        QCOMPARE(m_store->integer(activeKey), 0);
    }
}

void NotchManagerTest::brokenProfilesStayUntilTheNextSave()
{
    for (const MemoryStore::Value &stored :
         std::vector<MemoryStore::Value>{QByteArray("\xFF{"), QByteArray("[]"), true}) {
        m_store->values[profilesKey] = stored;
        m_store->setString(u"leftWidget"_s, u"todo"_s);
        m_store->setNumber(u"notchWidth"_s, 321);
        NotchManager &manager = launch();
        QVERIFY(manager.profiles() == NotchProfile::builtIn());
        QCOMPARE(manager.settings().widgets, defaultProfileWidgets);
        QCOMPARE(manager.notchWidth(), 321.0);
        manager.switchProfile(1);
        manager.setWidget(Zone::left, calendar);
        QVERIFY(m_store->values.at(profilesKey) == stored);
        auto expected = manager.profiles();
        expected.front().name = u"Mine"_s;
        manager.renameProfile(0, u"Mine"_s);
        QVERIFY(manager.profiles() == expected && isStored(expected));
    }
}

void NotchManagerTest::everyAssignmentStoresAndRebuilds()
{
    storeProfiles();
    NotchManager &manager = launch();
    NotchSettings expected = manager.settings();
    QVERIFY(expected == NotchSettings()); // whatever the profiles say
    const QSignalSpy changes(&manager, &NotchManager::settingsChanged);
    // Each twice the same: an assignment counts, not a difference. Nothing is limited.
    const auto assign = [&](const QString &key, const MemoryStore::Value &value,
                            const std::function<void()> &set) {
        for (int i = 0; i < 2; ++i) {
            set();
            QCOMPARE(std::exchange(m_store->written, {}), QStringList(key));
            QVERIFY(m_store->values.at(key) == value);
            QCOMPARE(m_overlays.takeEvents(), rebuilt);
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
        assign(QString::fromLatin1(size.first), value,
               [&] { manager.setProperty(size.first, value); });
        QCOMPARE(manager.property(size.first).toDouble(), value);
        value -= 7.25;
    }
    for (int index = 0; index < 5; ++index) {
        const auto zone = static_cast<Zone>(index);
        const double weight = -2.5 * index;
        expected.zoneWidths.at(index) = weight;
        assign(zoneWidthKeyList.at(index), weight, [&] { manager.setZoneWidth(zone, weight); });
        const NotchWidgetType type = allWidgetTypes().at(7 + index);
        expected.widgets.at(index) = type;
        assign(widgetKeyList.at(index), rawValue(type), [&] { manager.setWidget(zone, type); });
    }
    QCOMPARE(changes.size(), 2 * (4 + 2 * 5));
    QVERIFY(manager.profiles() == NotchProfile::builtIn()); // the active one keeps what it had

    QVERIFY(launch().settings() == expected);
}

void NotchManagerTest::overlaysComeAndGo()
{
    const auto second = m_platform->screens.add(QRectF(1920, 0, 1280, 720), u"B"_s);
    NotchManager &manager = launch();
    manager.apply();
    QCOMPARE(m_overlays.takeEvents().join(u','),
             u"close A,close B,free A,free B,make A,show A,make B,show B"_s);
    QVERIFY(m_overlays.built.at(0) == manager.settings());
    QVERIFY(m_overlays.built.at(1) == manager.settings());
    m_platform->screens.remove(second.get());
    manager.apply();
    m_overlays.events.clear();

    const auto timers = m_platform->clock.runningTimers();
    manager.setEnabled(false);
    QCOMPARE(m_overlays.takeEvents(), rebuilt.mid(0, 2));
    QCOMPARE(m_platform->clock.runningTimers(), timers); // the services go on
    manager.setNotchWidth(300);
    manager.switchProfile(1);
    QVERIFY(m_overlays.events.isEmpty());
    manager.setEnabled(true);
    QCOMPARE(m_overlays.takeEvents(), rebuilt.mid(2));
    QCOMPARE(m_overlays.built.back().notchWidth, 300.0);
    manager.setEnabled(true);
    QCOMPARE(m_overlays.takeEvents(), rebuilt);
    manager.setEnabled(false);
    QVERIFY(!launch().isEnabled() && m_manager->controllers().empty());
    m_manager->setEnabled(true);
    m_overlays.events.clear();
    m_manager.reset();
    QCOMPARE(m_overlays.events, rebuilt.mid(0, 2));
}

void NotchManagerTest::switchingRebuildsOnce()
{
    NotchManager &manager = launch();
    NotchSettings expected = manager.settings();
    expected.widgets = NotchProfile::builtIn().back().widgets;
    for (int i = 0; i < 2; ++i) { // the one that is active already, too
        const QSignalSpy changed(&manager, &NotchManager::profilesChanged);
        manager.switchProfile(3);
        QCOMPARE(m_overlays.takeEvents(), rebuilt);
        QVERIFY(m_overlays.built.back() == expected);
        QCOMPARE(manager.activeProfileIndex(), 3);
        QCOMPARE(changed.size(), 1);
        QCOMPARE(std::exchange(m_store->written, {}), QStringList(activeKey) + widgetKeyList);
    }
    QCOMPARE(m_store->integer(activeKey), 3);
    QCOMPARE(m_store->string(u"leftWidget"_s), std::optional(u"quote"_s));
    manager.setWidget(Zone::left, todo); // a single assignment rebuilds again
    QCOMPARE(m_overlays.takeEvents(), rebuilt);
}

void NotchManagerTest::adding()
{
    NotchManager &manager = launch();
    manager.setWidget(Zone::right, bluetooth);
    m_overlays.events.clear();
    manager.addProfile(u"Mine"_s);
    manager.addProfile(u"Mine"_s); // names need not differ
    QVERIFY(m_overlays.events.isEmpty());
    QCOMPARE(manager.profiles().size(), std::size_t{6});
    QCOMPARE(manager.activeProfileIndex(), 5);
    const NotchProfile &added = manager.profiles().back();
    QCOMPARE(added.name, u"Mine"_s);
    QCOMPARE(added.widgets, (ZoneWidgets{media, pomodoro, weather, bluetooth, dropActions}));
    QVERIFY(!added.id.isNull() && added.id != manager.profiles().at(4).id);

    // The next launch finds all of it, and now leaves the widgets as they are.
    const auto profiles = manager.profiles();
    m_store->setString(u"rightWidget"_s, u"todo"_s);
    NotchManager &next = launch();
    QVERIFY(next.profiles() == profiles);
    QCOMPARE(next.activeProfileIndex(), 5);
    QCOMPARE(next.widget(Zone::right), todo);
}

void NotchManagerTest::removing()
{
    const struct {
        int active;
        int removed;
        int expected;
    } rows[]{{3, 3, 2}, {0, 0, 0}, {1, 2, 1}, {2, 0, 2}, {3, 0, 2}};
    for (const auto &[active, removed, expected] : rows) { // the number stays, not the profile
        NotchManager &manager = launch();
        manager.switchProfile(active);
        const ZoneWidgets onScreen = manager.settings().widgets;
        m_overlays.events.clear();
        auto rest = manager.profiles();
        rest.erase(rest.begin() + removed);

        manager.removeProfile(removed);
        QVERIFY(manager.profiles() == rest && isStored(rest));
        QCOMPARE(manager.activeProfileIndex(), expected);
        QCOMPARE(m_store->integer(activeKey), expected);
        QCOMPARE(manager.settings().widgets, onScreen);
        QVERIFY(m_overlays.events.isEmpty());
        m_store->values.clear();
    }
    for (int i = 0; i < 3; ++i) {
        m_store->written.clear();
        m_manager->removeProfile(0);
    }
    QCOMPARE(m_manager->profiles().size(), std::size_t{1}); // the last one stays
    QVERIFY(m_store->written.isEmpty());
}

/// As a view sees it, and changes it.
void NotchManagerTest::viewsFollow()
{
    NotchManager &manager = launch();
    QJSEngine engine;
    engine.globalObject().setProperty(u"manager"_s, engine.newQObject(&manager));
    QJSEngine::setObjectOwnership(&manager, QJSEngine::CppOwnership);
    const auto run = [&engine](const QString &script) {
        return engine.evaluate(script).toString();
    };
    QSignalSpy changed(&manager, &NotchManager::settingsChanged);
    run(u"manager.setZoneWidth(1, 2.5); manager.setWidget(4, 'todo'); "
        "manager.setWidget(0, 'none!'); manager.cornerRadius = 7"_s);
    QCOMPARE(changed.size(), 3);
    QCOMPARE(run(u"manager.zoneWidths.join()"_s), u"1,2.5,1,1,1"_s);
    QCOMPARE(run(u"manager.widgets.join()"_s), u"media,pomodoro,weather,systemMonitor,todo"_s);
    QCOMPARE(m_overlays.built.size(), 3U);

    NotchProfileList &profiles = *manager.profileList();
    const QAbstractItemModelTester tester(&profiles);
    QSignalSpy renamed(&profiles, &NotchProfileList::dataChanged);
    QSignalSpy inserted(&profiles, &NotchProfileList::rowsInserted);
    QSignalSpy removed(&profiles, &NotchProfileList::rowsRemoved);
    run(u"manager.renameProfile(1, 'Work')"_s);
    QCOMPARE(renamed.size(), 1);
    run(u"manager.addProfile('Mine'); manager.removeProfile(0); manager.switchProfile(0)"_s);
    QCOMPARE(inserted.size() + removed.size(), 2);
    QStringList shown;
    for (int row = 0; row < profiles.rowCount(); ++row) {
        const QModelIndex index = profiles.index(row);
        const bool isActive = index.data(NotchProfileList::IsActiveRole).toBool();
        shown << index.data(NotchProfileList::NameRole).toString() + (isActive ? u"*"_s : u""_s);
    }
    QCOMPARE(shown.join(u','), u"Work*,System,Minimal,Mine"_s);
}

QTEST_GUILESS_MAIN(NotchManagerTest)
#include "NotchManagerTest.moc"
