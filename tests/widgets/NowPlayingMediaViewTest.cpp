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
    void newTitlesKeepOffTheButtons();
    void coverComesAndGoes();
    void buttonsReachThePlayer();
    void longTitles_data();
    void longTitles();

private:
    [[nodiscard]] QList<QQuickItem *> items(const char *type) const { return m_shown->items(type); }
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

void NowPlayingMediaViewTest::nothingPlaying()
{
    QCOMPARE(m_shown->texts("MarqueeText"), QStringList(u"Nothing Playing"_s));
    QCOMPARE(items("SymbolButton").size(), 3);
    QVERIFY(items("MediaProgressBar").isEmpty());
    QVERIFY(items("velmora::RoundedImage").isEmpty());

    // The rest stands in the middle, and makes room for the bar.
    const double before = items("NowPlayingText").front()->mapToScene({0, 0}).y();
    play();
    QTRY_COMPARE(items("MediaProgressBar").size(), 1);
    QTRY_VERIFY(items("NowPlayingText").size() == 1 &&
                items("NowPlayingText").front()->mapToScene({0, 0}).y() < before - 5);
    const QRectF bar = ShownWidget::place(*items("MediaProgressBar").front());
    QVERIFY(bar.bottom() <= 90 && bar.left() == 8 && bar.right() == 292);
}

void NowPlayingMediaViewTest::tracksFollowEachOther()
{
    play();
    QTRY_COMPARE(items("NowPlayingText").size(), 1); // "Nothing Playing" has left
    const auto *first = items("NowPlayingText").front();
    play([&](MediaTrack &track) { track.isPlaying = false; });
    QCOMPARE(items("NowPlayingText").size(), 1);
    QCOMPARE(items("NowPlayingText").front(), first);

    play([&](MediaTrack &track) { track.title = u"Next"_s; });
    QCOMPARE(items("NowPlayingText").size(), 2);
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
    QCOMPARE(items("TimeText").size(), 0);
    QCOMPARE(items("MediaProgressBar").size(), 1);
}

void NowPlayingMediaViewTest::newTitlesKeepOffTheButtons()
{
    m_shown->view.resize(153, 90); // the buttons are below the texts
    play();
    QTRY_COMPARE(items("NowPlayingText").size(), 1);
    play([&](MediaTrack &track) { track.title = u"Next"_s; });
    QCOMPARE(items("NowPlayingText").size(), 2);
    for (const QQuickItem *text : items("NowPlayingText")) {
        const QQuickItem *frame = text->parentItem();
        QRectF visible = ShownWidget::place(*text);
        visible = frame->clip() ? visible & ShownWidget::place(*frame) : visible;
        for (const QQuickItem *button : items("SymbolButton")) {
            QVERIFY(!visible.intersects(ShownWidget::place(*button)));
        }
    }
}

void NowPlayingMediaViewTest::coverComesAndGoes()
{
    QImage cover(4, 4, QImage::Format_RGB32);
    cover.fill(Qt::red);
    play([&](MediaTrack &track) { track.artwork = cover; });
    QTRY_COMPARE(items("AlbumArtView").size(), 1);
    const QPointer<QQuickItem> shown = items("AlbumArtView").front();
    QTRY_COMPARE(shown->opacity(), 1.0);
    const QPoint middle = shown->mapToScene({22, 22}).toPoint();
    const QPoint corner = shown->mapToScene({1, 1}).toPoint();
    const QImage picture = m_shown->view.grabWindow();
    QCOMPARE(picture.pixelColor(middle), QColor(Qt::red));
    QVERIFY(picture.pixelColor(corner) != QColor(Qt::red)); // it is rounded

    // The next track of the album: nothing is to flicker.
    play([&](MediaTrack &track) {
        track.title = u"Next"_s;
        track.artwork = cover.copy();
    });
    QCOMPARE(items("AlbumArtView"), QList<QQuickItem *>{shown});
    QCOMPARE(shown->opacity(), 1.0);

    play([&](MediaTrack &track) { track.title = u"Bare"_s; });
    m_shown->clock.advance(1s);
    QTRY_COMPARE(items("AlbumArtView").size(), 1);
    QVERIFY(items("velmora::RoundedImage").isEmpty());
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

void NowPlayingMediaViewTest::longTitles_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<QChar>("letter");
    QTest::newRow("wide") << 300 << QChar(u'W');
    QTest::newRow("narrow") << 153 << QChar(u'W');
    QTest::newRow("right to left") << 153 << QChar(0x5e9);
    QTest::newRow("tiny") << 20 << QChar(u'W');
}

void NowPlayingMediaViewTest::longTitles()
{
    QFETCH(int, width);
    QFETCH(QChar, letter);
    m_shown->view.resize(width, 90);
    play([&](MediaTrack &track) { track.title = QString(200, letter); });
    QTRY_COMPARE(items("NowPlayingText").size(), 1);
    if (width < 100) {
        return; // no warning, no crash
    }
    const auto *marquee = items("MarqueeText").front();
    const auto *label = items("NotchText").front();
    QVERIFY(marquee->clip() && marquee->width() > 60);
    const bool fromRight = letter != u'W';
    const double beginning =
        fromRight ? label->x() + label->width() - marquee->width() : label->x();
    QVERIFY(qAbs(beginning) < 1);
    m_shown->clock.advance(2300ms);
    QVERIFY(qAbs(label->x() + (fromRight ? label->width() - marquee->width() - 36 : 36)) < 1);
    // The texts have room of their own, also where the buttons are below them.
    for (const QQuickItem *button : items("SymbolButton")) {
        const QRectF place = ShownWidget::place(*button);
        QVERIFY(place.right() <= width && place.bottom() <= 90);
        QVERIFY(!place.intersects(ShownWidget::place(*marquee)));
    }
}

QTEST_MAIN(NowPlayingMediaViewTest)
#include "NowPlayingMediaViewTest.moc"
