#include "widgets/ShownWidget.h"

#include <optional>

using namespace velmora;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class NowPlayingMediaViewTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_shown.emplace("media", 300); }
    void cleanup()
    {
        m_shown->end();
        m_shown.reset();
    }

    void nothingPlaying();
    void tracksFollowEachOther();
    void coverComesAndGoes();
    void buttonsReachThePlayer();
    void longTitles();

private:
    [[nodiscard]] QList<QQuickItem *> items(const char *type) const { return m_shown->items(type); }
    [[nodiscard]] bool areButtonsFree() const;
    void play(const std::function<void(MediaTrack &)> &change = [](MediaTrack &) {});

    std::optional<ShownWidget> m_shown;
};

void NowPlayingMediaViewTest::play(const std::function<void(MediaTrack &)> &change)
{
    MediaTrack track = playingTrack(u"Song"_s, u"Them"_s);
    track.isArtworkPending = true;
    change(track);
    m_shown->platform.media.answer(track);
}

/// Whether the buttons are in the zone, and no text can be seen across them.
bool NowPlayingMediaViewTest::areButtonsFree() const
{
    const QRectF zone(QPointF(), m_shown->view.size());
    for (const QQuickItem *button : items("SymbolButton")) {
        const QRectF place = ShownWidget::place(*button);
        for (const QQuickItem *text : items("NowPlayingText")) {
            const QRectF frame = ShownWidget::place(*text->parentItem());
            const QRectF visible = ShownWidget::place(*text);
            if ((text->parentItem()->clip() ? visible & frame : visible).intersects(place)) {
                return false;
            }
        }
        if (!zone.contains(place)) {
            return false;
        }
    }
    return true;
}

void NowPlayingMediaViewTest::nothingPlaying()
{
    QCOMPARE(m_shown->texts("MarqueeText"), QStringList(u"Nothing Playing"_s));
    QCOMPARE(items("SymbolButton").size(), 3);
    QVERIFY(items("MediaProgressBar").isEmpty());
    QVERIFY(items("velmora::RoundedImage").isEmpty());

    // It stands in the middle, and makes room for the bar.
    const double before = items("NowPlayingText").front()->mapToScene({0, 0}).y();
    play();
    QTRY_COMPARE(items("MediaProgressBar").size(), 1);
    QTRY_VERIFY(items("NowPlayingText").size() == 1 &&
                items("NowPlayingText").front()->mapToScene({0, 0}).y() < before - 5);
    const QRectF bar = ShownWidget::place(*items("MediaProgressBar").front());
    QVERIFY(bar.bottom() <= 90 && bar.left() == 8 && bar.right() == 292);
    QCOMPARE(m_shown->texts("TabularText"), (QStringList{u"0:10"_s, u"1:40"_s}));
}

void NowPlayingMediaViewTest::tracksFollowEachOther()
{
    m_shown->view.resize(153, 90); // the buttons are below the texts
    play();
    QTRY_COMPARE(items("NowPlayingText").size(), 1); // "Nothing Playing" has left
    const auto first = items("NowPlayingText");
    play([&](MediaTrack &track) { track.isPlaying = false; });
    QCOMPARE(items("NowPlayingText"), first);

    play([&](MediaTrack &track) { track.title = u"Next"_s; });
    QCOMPARE(items("NowPlayingText").size(), 2);
    QVERIFY(areButtonsFree());
    QCOMPARE(m_shown->texts("MarqueeText").front(), u"Song"_s); // still says it
    QTRY_COMPARE(items("NowPlayingText").size(), 1);
    // A burst leaves one behind.
    for (int i = 0; i < 20; ++i) {
        play([&](MediaTrack &track) { track.title = QString::number(i); });
    }
    QTRY_COMPARE(items("NowPlayingText").size(), 1);
    QCOMPARE(m_shown->texts("MarqueeText").front(), u"19"_s);

    // Without an artist, and of unknown length.
    play([&](MediaTrack &track) {
        track.artist = QString();
        track.duration = 0.0;
    });
    QTRY_COMPARE(items("MarqueeText").size(), 1);
    QVERIFY(items("TabularText").isEmpty());
    QCOMPARE(items("MediaProgressBar").size(), 1);
}

void NowPlayingMediaViewTest::coverComesAndGoes()
{
    QImage cover(4, 4, QImage::Format_RGB32);
    cover.fill(Qt::red);
    play([&](MediaTrack &track) { track.artwork = cover; });
    QTRY_COMPARE(items("AlbumArtView").size(), 1);
    const QPointer<QQuickItem> shown = items("AlbumArtView").front();
    QTRY_COMPARE(shown->opacity(), 1.0);
    const QImage picture = m_shown->view.grabWindow();
    const auto pixel = [&](const QPointF &at) {
        return picture.pixelColor(shown->mapToScene(at).toPoint());
    };
    QCOMPARE(pixel({22, 22}), QColor(Qt::red));
    QVERIFY(pixel({1, 1}) != QColor(Qt::red)); // it is rounded

    const auto next = [this](const QString &title, const QImage &own) {
        play([&](MediaTrack &track) {
            track.title = title;
            track.artwork = own;
        });
        return items("AlbumArtView");
    };
    // The next track of the album: nothing is to flicker.
    const QList<QQuickItem *> same{shown};
    QCOMPARE(next(u"Next"_s, cover.copy()), same);
    QCOMPARE(shown->opacity(), 1.0);
    // A cover that comes a moment after its track is waited for,
    QCOMPARE(next(u"Late"_s, {}), same);
    m_shown->clock.advance(200ms);
    QCOMPARE(next(u"Late"_s, cover), same);
    m_shown->clock.advance(200ms);
    QCOMPARE(items("AlbumArtView"), same);
    // but not for ever, however often there is news meanwhile.
    for (int i = 0; i < 4; ++i) {
        next(u"Bare"_s, {});
        m_shown->clock.advance(100ms);
    }
    QTRY_VERIFY(!shown);
    QVERIFY(items("AlbumArtView").size() == 1 && items("velmora::RoundedImage").isEmpty());
    next(u"Own"_s, cover);
    QTRY_COMPARE(items("AlbumArtView").size(), 1);
    QCOMPARE(items("velmora::RoundedImage").size(), 1);
    Q_EMIT m_shown->platform.media.spotifyChanged(PlayerNotice()); // the end of all is no new one
    QTRY_VERIFY(items("velmora::RoundedImage").isEmpty());
}

void NowPlayingMediaViewTest::buttonsReachThePlayer()
{
    play();
    m_shown->checkHover(0.85F);
    m_shown->press({u"Previous track"_s, u"Pause"_s, u"Next track"_s});
    QCOMPARE(m_shown->platform.media.commands,
             (QList{PlaybackCommand::previousTrack, PlaybackCommand::togglePlayPause,
                    PlaybackCommand::nextTrack}));
    play([&](MediaTrack &track) { track.isPlaying = false; });
    QCOMPARE(items("SymbolButton").at(1)->property("symbol").toString(), u"play.fill"_s);
}

void NowPlayingMediaViewTest::longTitles()
{
    const std::pair<int, QChar> rows[]{{300, u'W'}, {153, u'W'}, {153, u'\u05e9'}};
    for (const auto &[width, letter] : rows) {
        m_shown->view.resize(width, 90);
        play([&](MediaTrack &track) { track.title = QString(200, letter); });
        QTRY_COMPARE(m_shown->view.rootObject()->width(), width);
        QTRY_COMPARE(items("NowPlayingText").size(), 1);
        const auto *marquee = items("MarqueeText").front();
        const auto *label = items("NotchText").front();
        QVERIFY(marquee->clip() && marquee->width() > 60);
        const bool fromRight = letter != u'W';
        const auto moved = [&] {
            return fromRight ? label->x() + label->width() - marquee->width() : -label->x();
        };
        QVERIFY(qAbs(moved()) < 1);
        m_shown->clock.advance(2300ms);
        QVERIFY(qAbs(moved() - 36) < 1);
        QVERIFY(areButtonsFree());
    }
    m_shown->view.resize(20, 90); // no warning, no crash
}

QTEST_MAIN(NowPlayingMediaViewTest)
#include "NowPlayingMediaViewTest.moc"
