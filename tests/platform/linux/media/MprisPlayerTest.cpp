#include "platform/linux/media/MprisPlayer.h"

#include "platform/linux/Throttle.h"
#include "platform/linux/media/PlayerNotices.h"
#include "support/VirtualClock.h"

#include <QTest>

#include <limits>

using namespace velmora;
using namespace std::chrono_literals;

namespace
{

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

QVariantMap properties(const QString &title, const QVariantMap &others = {})
{
    QVariantMap map{{u"PlaybackStatus"_qs, u"Playing"_qs},
                    {u"Metadata"_qs, QVariantMap{{u"xesam:title"_qs, title}}}};
    map.insert(others);
    return map;
}

MprisTrack track(const char *key, const QVariant &value)
{
    return MprisTrack::fromMetadata(QVariantMap{{QLatin1String(key), value}});
}

} // namespace

class MprisPlayerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsMetadata();
    void computesThePosition();
    void doubtsThePositionAfterChanges();
    void knowsThePlayersWithNotices();
    void throttles();
};

void MprisPlayerTest::readsMetadata()
{
    constexpr auto length = "mpris:length";
    QCOMPARE(track(length, qlonglong{90'000'000}).duration, 90.0);
    QCOMPARE(track(length, qulonglong{90'000'000}).duration, 90.0);
    QCOMPARE(track(length, 90'000'000U).duration, 90.0);
    QCOMPARE(track(length, 1'500'000.0).duration, 1.5);
    for (const QVariant &value : {QVariant(true), QVariant(u"90"_qs), QVariant(notANumber),
                                  QVariant(std::numeric_limits<double>::infinity())})
        QCOMPARE(track(length, value).duration, 0.0);

    constexpr auto artist = "xesam:artist";
    QCOMPARE(track(artist, QStringList{u"A"_qs, QString(), u"B"_qs}).artist, u"A, B"_qs);
    QCOMPARE(track(artist, QStringList(5000, u"A"_qs)).artist.size(), 1000);

    constexpr auto title = "xesam:title";
    const QString note = u"\U0001f3b5"_qs; // two units, which are never torn apart
    QCOMPARE(track(title, u"x"_qs + note.repeated(600)).title, u"x"_qs + note.repeated(499));

    constexpr auto url = "xesam:url";
    QCOMPARE(track(url, u"file:///a/b%20%C3%A4%23.mp3"_qs).title, u"b \u00e4#.mp3"_qs);
    QCOMPARE(track(url, u"http://radio.example/"_qs).title, QString());
    QCOMPARE(track(url, QString(1'000'000, u'/')).title, QString());
}

void MprisPlayerTest::computesThePosition()
{
    MprisPlayer player;
    player.takeAll(properties(u"T"_qs, {{u"Rate"_qs, 2.0}, {u"Position"_qs, 10'000'000}}), 100s);
    QCOMPARE(player.position(103s), 16.0);
    player.takeChanges({{u"Rate"_qs, 1.0}}, 103s);
    QCOMPARE(player.position(104s), 17.0);
    player.takeChanges({{u"PlaybackStatus"_qs, u"Paused"_qs}}, 104s);
    QCOMPARE(player.position(200s), 17.0);
    for (const QVariant &rate :
         {QVariant(0.0), QVariant(-1.0), QVariant(u"2"_qs), QVariant(notANumber)}) {
        player.takeChanges({{u"Rate"_qs, 2.0}}, 200s);
        player.takeChanges({{u"Rate"_qs, rate}, {u"PlaybackStatus"_qs, u"Playing"_qs}}, 200s);
        player.takePosition(17'000'000, 200s);
        QCOMPARE(player.position(201s), 18.0);
    }
    player.takePosition(qlonglong{-40'000}, 200s);
    QCOMPARE(player.position(200s), 0.0);

    // Not beyond the end of the track.
    player.takeChanges({{u"PlaybackStatus"_qs, u"Playing"_qs},
                        {u"Metadata"_qs, QVariantMap{{u"xesam:title"_qs, u"T"_qs},
                                                     {u"mpris:length"_qs, 60'000'000}}}},
                       200s);
    QCOMPARE(player.position(230s), 30.0);
    QCOMPARE(player.position(300s), 60.0);

    // What is no longer told is forgotten, the rate too.
    player.takeChanges({{u"PlaybackStatus"_qs, u"Dancing"_qs}, {u"Rate"_qs, 2.0}}, 300s);
    QCOMPARE(player.status(), MprisPlayer::Status::Stopped);
    player.takeAll({{u"PlaybackStatus"_qs, u"Playing"_qs}}, 300s);
    QVERIFY(player.isPlaying() && !player.hasItem());
    player.takePosition(0, 300s);
    QCOMPARE(player.position(305s), 5.0);
}

void MprisPlayerTest::doubtsThePositionAfterChanges()
{
    MprisPlayer player;
    player.takeAll(properties(u"T"_qs, {{u"Position"_qs, 5'000'000}}), 0s);
    QVERIFY(!player.takePositionDoubt());
    const int jumps = player.jumpCount();
    player.takePosition(7'100'000, 2s); // jitter
    QCOMPARE(player.jumpCount(), jumps);
    player.takePosition(60'000'000, 2s);
    QCOMPARE(player.jumpCount(), jumps + 1);

    // What is told later of the same track does not make it another one.
    QVariantMap metadata{{u"xesam:title"_qs, u"T"_qs}, {u"mpris:artUrl"_qs, u"/cover.png"_qs}};
    player.takeChanges({{u"Metadata"_qs, metadata}}, 3s);
    QVERIFY(!player.takePositionDoubt());
    metadata.insert(u"mpris:trackid"_qs, u"/2"_qs);
    player.takeChanges({{u"Metadata"_qs, metadata}}, 3s);
    QCOMPARE(player.position(3s), 0.0);
    QVERIFY(player.takePositionDoubt());
}

void MprisPlayerTest::knowsThePlayersWithNotices()
{
    QCOMPARE(noticeKind({u"spotify"_qs}), NoticeKind::Spotify);
    QCOMPARE(noticeKind({u"x"_qs, u"ncspot.instance12"_qs}), NoticeKind::Spotify);
    QCOMPARE(noticeKind({u"Cider"_qs}), NoticeKind::AppleMusic);
    for (const auto *name : {"spotifyfake", "vlc", "", ".spotify"})
        QCOMPARE(noticeKind({QLatin1String(name)}), NoticeKind::None);
}

void MprisPlayerTest::throttles()
{
    VirtualClock clock;
    int runs = 0;
    Throttle *self = nullptr;
    bool isEager = false;
    Throttle throttle(clock, 30ms, [&] {
        ++runs;
        if (isEager)
            self->request();
    });
    self = &throttle;
    throttle.request();
    throttle.request();
    QCOMPARE(runs, 1);
    clock.advance(29'500us);
    throttle.request();
    QCOMPARE(runs, 1);
    clock.advance(500us);
    QCOMPARE(runs, 2);
    clock.advance(1s);
    QCOMPARE(runs, 2);
    // A task that asks for itself has to wait like everybody.
    isEager = true;
    throttle.request();
    QCOMPARE(runs, 3);
    clock.advance(300ms);
    QCOMPARE(runs, 13);
}

QTEST_GUILESS_MAIN(MprisPlayerTest)
#include "MprisPlayerTest.moc"
