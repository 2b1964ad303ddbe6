#include "support/FakePlatform.h"
#include "support/QmlItems.h"
#include "support/QmlWarnings.h"
#include "widgets/NowPlayingModel.h"

#include <QAccessible>
#include <QQmlEngine>
#include <QQuickView>
#include <QTest>
#include <QtQml/qqmlextensionplugin.h>

#include <optional>

Q_IMPORT_QML_PLUGIN(Velmora_ConfigPlugin)
Q_IMPORT_QML_PLUGIN(Velmora_DropPlugin)
Q_IMPORT_QML_PLUGIN(Velmora_MediaPlugin)
Q_IMPORT_QML_PLUGIN(Velmora_ServicesPlugin)
Q_IMPORT_QML_PLUGIN(Velmora_StylePlugin)
Q_IMPORT_QML_PLUGIN(Velmora_WidgetsPlugin)

using namespace velmora;
using namespace std::chrono_literals;

class NowPlayingMediaViewTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void nothingPlaying();
    void tracksFollowEachOther();
    void coverComesAndGoes();
    void buttonsReachThePlayer();
    void longTitles_data();
    void longTitles();

private:
    [[nodiscard]] QList<QQuickItem *> items(const char *type) const
    {
        return qmlItems(*m_view->contentItem(), type);
    }
    void play(const std::function<void(MediaTrack &)> &change = [](MediaTrack &) {});

    std::optional<QmlWarnings> m_warnings;
    std::optional<FakePlatform> m_platform;
    std::unique_ptr<MediaRemoteService> m_service;
    std::unique_ptr<QQuickView> m_view;
};

void NowPlayingMediaViewTest::init()
{
    m_warnings.emplace();
    m_platform.emplace();
    m_service = std::make_unique<MediaRemoteService>(m_platform->clock, m_platform->media,
                                                     m_platform->http, m_platform->store);
    m_view = std::make_unique<QQuickView>();
    m_view->engine()->addImportPath(QStringLiteral("qrc:/qt/qml"));
    m_view->setResizeMode(QQuickView::SizeRootObjectToView);
    m_view->resize(300, 90);
    m_view->setInitialProperties(
        {{QStringLiteral("service"), QVariant::fromValue(m_service.get())},
         {QStringLiteral("clock"), QVariant::fromValue<Clock *>(&m_platform->clock)}});
    m_view->setSource(QUrl(QStringLiteral("qrc:/qt/qml/Velmora/Widgets/NowPlayingMediaView.qml")));
    m_view->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
}

void NowPlayingMediaViewTest::cleanup()
{
    m_view.reset();
    m_service.reset();
    m_platform.reset();
    const QStringList warnings = m_warnings->list();
    m_warnings.reset();
    QCOMPARE(warnings, QStringList());
}

void NowPlayingMediaViewTest::play(const std::function<void(MediaTrack &)> &change)
{
    MediaTrack track = playingTrack(QStringLiteral("Song"), QStringLiteral("Them"));
    change(track);
    m_platform->media.answer(track);
}

void NowPlayingMediaViewTest::nothingPlaying()
{
    const auto texts = items("MarqueeText");
    QCOMPARE(texts.size(), 1);
    QCOMPARE(texts.front()->property("text").toString(), QStringLiteral("Nothing Playing"));
    QCOMPARE(items("SymbolButton").size(), 3);
    QVERIFY(items("MediaProgressBar").isEmpty());
    QCOMPARE(items("velmora::RoundedImage").front()->opacity(), 0.0);

    // The rest stands in the middle, and makes room for the bar.
    const double before = items("NowPlayingText").front()->mapToScene({0, 0}).y();
    play();
    QTRY_COMPARE(items("MediaProgressBar").size(), 1);
    QTRY_VERIFY(items("NowPlayingText").size() == 1 &&
                items("NowPlayingText").front()->mapToScene({0, 0}).y() < before - 5);
    const QRectF bar = items("MediaProgressBar")
                           .front()
                           ->mapRectToScene(items("MediaProgressBar").front()->boundingRect());
    QVERIFY(bar.bottom() <= 90 && bar.left() == 8 && bar.right() == 292);
}

void NowPlayingMediaViewTest::tracksFollowEachOther()
{
    play();
    QTRY_COMPARE(items("NowPlayingText").size(), 1); // "Nothing Playing" has left
    QTRY_COMPARE(items("AlbumArtView").size(), 1);
    const auto *first = items("NowPlayingText").front();
    play([&](MediaTrack &track) { track.isPlaying = false; });
    QCOMPARE(items("NowPlayingText"), QList<QQuickItem *>{items("NowPlayingText").front()});
    QCOMPARE(items("NowPlayingText").front(), first);

    play([&](MediaTrack &track) { track.title = QStringLiteral("Next"); });
    QCOMPARE(items("NowPlayingText").size(), 2);
    QCOMPARE(items("AlbumArtView").size(), 2);
    const auto texts = items("MarqueeText");
    QCOMPARE(texts.front()->property("text").toString(), QStringLiteral("Song")); // still says it
    QTRY_COMPARE(items("NowPlayingText").size(), 1);
    QTRY_COMPARE(items("AlbumArtView").size(), 1);
    // A burst leaves one behind.
    for (int i = 0; i < 20; ++i) {
        play([&](MediaTrack &track) { track.title = QString::number(i); });
    }
    QTRY_COMPARE(items("NowPlayingText").size(), 1);
    QCOMPARE(items("MarqueeText").front()->property("text").toString(), QStringLiteral("19"));

    // Without an artist, and of unknown length.
    play([&](MediaTrack &track) {
        track.artist = QString();
        track.duration = 0.0;
    });
    QTRY_COMPARE(items("MarqueeText").size(), 1);
    QCOMPARE(items("TimeText").size(), 0);
    QCOMPARE(items("MediaProgressBar").size(), 1);
}

void NowPlayingMediaViewTest::coverComesAndGoes()
{
    QImage cover(4, 4, QImage::Format_RGB32);
    cover.fill(Qt::red);
    play([&](MediaTrack &track) { track.artwork = cover; });
    QTRY_COMPARE(items("AlbumArtView").size(), 1);
    QTRY_COMPARE(items("velmora::RoundedImage").front()->opacity(), 1.0);
    const auto *view = items("AlbumArtView").front();
    const QPoint middle = view->mapToScene({22, 22}).toPoint();
    const QPoint corner = view->mapToScene({1, 1}).toPoint();
    QImage picture = m_view->grabWindow();
    QCOMPARE(picture.pixelColor(middle), QColor(Qt::red));
    QVERIFY(picture.pixelColor(corner) != QColor(Qt::red)); // it is rounded

    play([&](MediaTrack &track) { track.title = QStringLiteral("Next"); });
    QTRY_COMPARE(items("AlbumArtView").size(), 1);
    QTRY_COMPARE(items("velmora::RoundedImage").front()->opacity(), 0.0);
}

void NowPlayingMediaViewTest::buttonsReachThePlayer()
{
    play();
    const auto buttons = items("SymbolButton");
    QCOMPARE(buttons.size(), 3);
    QStringList names;
    for (QQuickItem *button : buttons) {
        names << QAccessible::queryAccessibleInterface(button)->text(QAccessible::Name);
        QTest::mouseClick(m_view.get(), Qt::LeftButton, {},
                          button->mapToScene({3, 3}).toPoint()); // anywhere in its area
    }
    QCOMPARE(m_platform->media.commands,
             (QList{PlaybackCommand::previousTrack, PlaybackCommand::togglePlayPause,
                    PlaybackCommand::nextTrack}));
    QCOMPARE(names.at(1), QStringLiteral("Pause"));
    play([&](MediaTrack &track) { track.isPlaying = false; });
    QCOMPARE(buttons.at(1)->property("symbol").toString(), QStringLiteral("play.fill"));
}

void NowPlayingMediaViewTest::longTitles_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<QString>("title");
    QTest::newRow("wide") << 300 << QString(200, u'W');
    QTest::newRow("narrow") << 153 << QString(200, u'W');
    QTest::newRow("right to left") << 153 << QString(200, QChar(0x5e9));
    QTest::newRow("tiny") << 20 << QString(200, u'W');
}

void NowPlayingMediaViewTest::longTitles()
{
    QFETCH(int, width);
    QFETCH(QString, title);
    m_view->resize(width, 90);
    play([&](MediaTrack &track) { track.title = title; });
    QTRY_COMPARE(items("NowPlayingText").size(), 1);
    if (width < 100) {
        return; // no warning, no crash
    }
    const auto *marquee = items("MarqueeText").front();
    const auto *label = items("NotchText").front();
    QVERIFY(marquee->clip() && marquee->width() > 60);
    const bool fromRight = title.isRightToLeft();
    const double beginning =
        fromRight ? label->x() + label->width() - marquee->width() : label->x();
    QVERIFY(qAbs(beginning) < 1);
    m_platform->clock.advance(2300ms);
    QVERIFY(qAbs(label->x() + (fromRight ? label->width() - marquee->width() - 36 : 36)) < 1);
    // The texts have room of their own, also where the buttons are below them.
    for (const QQuickItem *button : items("SymbolButton")) {
        const QRectF place = button->mapRectToScene(button->boundingRect());
        QVERIFY(place.right() <= width && place.bottom() <= 90);
        QVERIFY(!place.intersects(marquee->mapRectToScene(marquee->boundingRect())));
    }
}

QTEST_MAIN(NowPlayingMediaViewTest)
#include "NowPlayingMediaViewTest.moc"
