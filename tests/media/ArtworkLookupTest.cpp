#include "media/ArtworkLookup.h"

#include "support/HttpServer.h"
#include "support/VirtualClock.h"

#include <QBuffer>
#include <QTest>

using namespace velmora;
using namespace std::chrono_literals;

namespace
{

QByteArray picture(const QSize &size, const char *format = "PNG")
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::red);
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, format);
    return buffer.data();
}

struct Rig {
    VirtualClock clock;
    HttpServer server;
    ArtworkLookup lookup{clock, server.url()};
    QList<QImage> found;

    Rig()
    {
        resultIs(R"({"results": [{"artworkUrl100": "HOST/100x100bb.jpg"}]})");
        pageIs("/600x600bb.jpg", HttpServer::ok(picture({600, 600}, "JPEG")));
    }

    void pageIs(const QByteArray &path, const QByteArray &answer)
    {
        server.pages[path] = [answer] { return answer; };
    }

    void resultIs(QByteArray json)
    {
        pageIs("/search", HttpServer::ok(json.replace("HOST", server.url().toEncoded())));
    }

    void start(const QString &title, const QString &artist = QStringLiteral("Them"))
    {
        lookup.start(title, artist, [this](const QImage &image) { found << image; });
    }

    /// Whether a search under way has ended: after a failure the track rests, and only then.
    [[nodiscard]] bool endsInFailure()
    {
        return QTest::qWaitFor([this] { return clock.runningTimers() == 1; }) && found.isEmpty();
    }
};

} // namespace

class ArtworkLookupTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void findsAndKeeps();
    void asksForTheTerm_data();
    void asksForTheTerm();
    void failures_data();
    void failures();
    void transportFailures();
    void limitsItsRate();
    void goesWhileSearching();
};

void ArtworkLookupTest::findsAndKeeps()
{
    Rig rig;
    rig.start(QStringLiteral("Song"));
    rig.start(QStringLiteral("Song")); // one at a time
    QTRY_COMPARE(rig.found.size(), 1);
    QCOMPARE(rig.found.front().size(), QSize(256, 256)); // no larger than it is ever shown
    QCOMPARE(rig.server.requests.size(), 2);
    QVERIFY(!rig.lookup.cached(QStringLiteral("Song"), QStringLiteral("Them")).isNull());
    QVERIFY(rig.lookup.cached(QStringLiteral("song"), QStringLiteral("Them")).isNull());

    // An address without a size in it is taken as it is; a redirection is followed.
    rig.resultIs(R"({"results": [{"artworkUrl100": "HOST/plain.png"}]})");
    rig.pageIs("/plain.png", "HTTP/1.1 302 Found\r\nLocation: /there.png\r\n\r\n");
    rig.pageIs("/there.png", HttpServer::ok(picture({100, 50})));
    rig.start(QStringLiteral("Plain"));
    QTRY_COMPARE(rig.found.size(), 2);
    QCOMPARE(rig.found.back().size(), QSize(100, 50));

    // What is kept is bounded.
    rig.resultIs(R"({"results": [{"artworkUrl100": "HOST/there.png"}]})");
    for (int i = 0; i < 30; ++i) {
        rig.clock.advance(3s);
        rig.start(QString::number(i));
        QTRY_COMPARE(rig.found.size(), 3 + i);
    }
    QVERIFY(rig.lookup.cached(QStringLiteral("Song"), QStringLiteral("Them")).isNull());
    QVERIFY(!rig.lookup.cached(QStringLiteral("29"), QStringLiteral("Them")).isNull());
}

void ArtworkLookupTest::asksForTheTerm_data()
{
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("artist");
    QTest::addColumn<QByteArray>("term");
    QTest::newRow("plain") << "Song"
                           << "Them" << QByteArray("Them%20Song");
    QTest::newRow("no artist") << "Song"
                               << "" << QByteArray("%20Song");
    QTest::newRow("left as they are") << "A&B+C?/"
                                      << "x=y" << QByteArray("x=y%20A&B+C?/");
    QTest::newRow("encoded") << QStringLiteral("\u00e9#%\"") << "[]"
                             << QByteArray("%5B%5D%20%C3%A9%23%25%22");
    QTest::newRow("half a character") << QString(QChar(0xd800)) << "a" << QByteArray();
}

void ArtworkLookupTest::asksForTheTerm()
{
    QFETCH(QString, title);
    QFETCH(QString, artist);
    QFETCH(QByteArray, term);
    Rig rig;
    rig.start(title, artist);
    QTRY_VERIFY(!rig.server.requests.isEmpty());
    if (!term.isEmpty()) {
        QCOMPARE(rig.server.requests.front(), "/search?term=" + term + "&entity=song&limit=3");
    }
    // A title that is empty, or looks like it, is not looked up.
    QTRY_COMPARE(rig.found.size(), 1);
    rig.start(QString(), artist);
    rig.start(QStringLiteral("|x"), artist);
    QVERIFY(!rig.lookup.isSearching());
}

void ArtworkLookupTest::failures_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QByteArray>("image");
    const QByteArray good = R"({"results": [{"artworkUrl100": "HOST/a"}]})";
    QTest::newRow("not JSON") << QByteArray("<html>") << QByteArray();
    QTest::newRow("an array") << QByteArray("[]") << QByteArray();
    QTest::newRow("no results") << QByteArray("{}") << QByteArray();
    QTest::newRow("odd results") << QByteArray(R"({"results": {"a": 1}})") << QByteArray();
    QTest::newRow("empty results") << QByteArray(R"({"results": []})") << QByteArray();
    QTest::newRow("odd result") << QByteArray(R"({"results": [1]})") << QByteArray();
    QTest::newRow("second result only")
        << QByteArray(R"({"results": [{}, {"artworkUrl100": "HOST/a"}]})")
        << HttpServer::ok(picture({9, 9}));
    QTest::newRow("odd address") << QByteArray(R"({"results": [{"artworkUrl100": 1}]})")
                                 << QByteArray();
    QTest::newRow("no address") << QByteArray(R"({"results": [{"artworkUrl100": "::"}]})")
                                << QByteArray();
    QTest::newRow("local file") << QByteArray(
                                       R"({"results": [{"artworkUrl100": "file:///etc/passwd"}]})")
                                << QByteArray();
    QTest::newRow("huge JSON") << QByteArray(2'000'000, '[') << QByteArray();
    QTest::newRow("error page") << good << QByteArray();
    QTest::newRow("one byte") << good << HttpServer::ok("x");
    QTest::newRow("huge image") << good << HttpServer::ok(QByteArray(20'000'000, 'x'));
    QTest::newRow("absurd dimensions")
        << good << HttpServer::ok("GIF89a\xff\xff\xff\xff" + QByteArray(100, '\0'));
    QTest::newRow("drawing")
        << good
        << HttpServer::ok(R"(<svg xmlns="http://www.w3.org/2000/svg" width="9" height="9"/>)");
}

void ArtworkLookupTest::failures()
{
    QFETCH(QByteArray, json);
    QFETCH(QByteArray, image);
    Rig rig;
    rig.resultIs(json);
    if (!image.isEmpty()) {
        rig.pageIs("/a", image);
    }
    rig.start(QStringLiteral("Song"));
    QVERIFY(rig.endsInFailure());

    // The failure is not held against the track for long.
    rig.resultIs(R"({"results": [{"artworkUrl100": "HOST/100x100bb.jpg"}]})");
    rig.clock.advance(59s);
    rig.start(QStringLiteral("Song"));
    rig.clock.advance(1s);
    const auto count = rig.server.count("/search");
    QCOMPARE(count, 1);
    rig.start(QStringLiteral("Song"));
    QTRY_COMPARE(rig.found.size(), 1);
}

void ArtworkLookupTest::transportFailures()
{
    VirtualClock clock;
    for (const char *host : {"http://127.0.0.1:1", "https://127.0.0.1:1", "", "nonsense:"}) {
        ArtworkLookup lookup(clock, QUrl(QString::fromLatin1(host)));
        lookup.start(QStringLiteral("Song"), {}, [](const QImage &) { QFAIL("found"); });
        QTRY_COMPARE(clock.runningTimers(), 1);
    }
    // A server that is not what its certificate should say, or speaks another protocol.
    Rig rig;
    QUrl secure = rig.server.url();
    secure.setScheme(QStringLiteral("https"));
    ArtworkLookup lookup(clock, secure);
    lookup.start(QStringLiteral("Song"), {}, [](const QImage &) { QFAIL("found"); });
    QTRY_COMPARE(rig.server.hasPendingConnections(), false);
}

void ArtworkLookupTest::limitsItsRate()
{
    Rig rig;
    rig.server.pages["/search"] = [] { return QByteArray(); }; // never answers
    for (int i = 0; i < 10; ++i) {
        rig.start(QString::number(i));
    }
    QTRY_COMPARE(rig.server.requests.size(), 4);
    rig.clock.advance(100ms);
    QCoreApplication::processEvents();
    QCOMPARE(rig.server.requests.size(), 4);

    // Fifty seconds of two hundred tracks each second, none of which is known: each search is
    // over before the next track comes.
    Rig storm;
    storm.resultIs("{}");
    int started = 0;
    for (int i = 0; i < 10'000; ++i) {
        storm.start(QString::number(i));
        if (storm.lookup.isSearching()) {
            ++started;
            QTRY_VERIFY(!storm.lookup.isSearching());
        }
        storm.clock.advance(5ms);
    }
    QVERIFY(started >= 20 && started <= 20 + 50 / 3 + 1);
    QCOMPARE(storm.server.requests.size(), started);
}

void ArtworkLookupTest::goesWhileSearching()
{
    VirtualClock clock;
    HttpServer server;
    server.pages["/search"] = [] { return QByteArray(); };
    {
        ArtworkLookup lookup(clock, server.url());
        lookup.start(QStringLiteral("Song"), {}, [](const QImage &) { QFAIL("found"); });
        QTRY_COMPARE(server.requests.size(), 1);
    }
    QCOMPARE(clock.runningTimers(), 0);
}

QTEST_GUILESS_MAIN(ArtworkLookupTest)
#include "ArtworkLookupTest.moc"
