#include "media/ArtworkLookup.h"

#include "support/FakeHttpGetter.h"
#include "support/MemoryStore.h"
#include "support/VirtualClock.h"

#include <QBuffer>
#include <QHash>
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

const auto goodResult =
    QByteArray(R"({"results": [{"artworkUrl100": "https://host/100x100bb.jpg"}]})");

struct Rig {
    VirtualClock clock;
    FakeHttpGetter http;
    MemoryStore store;
    ArtworkLookup lookup{clock, http, store};
    QByteArray result = goodResult;
    QHash<QString, QByteArray> images{
        {QStringLiteral("https://host/600x600bb.jpg"), picture({600, 600}, "JPEG")}};
    QList<QImage> found;

    Rig()
    {
        http.pages = [this](const QString &url) -> std::optional<QByteArray> {
            if (url.contains(u"/search?"))
                return result;
            return images.contains(url) ? std::optional(images.value(url)) : std::nullopt;
        };
    }

    /// Whether it asks the network.
    bool start(const QString &title, const QString &artist = QStringLiteral("Them"))
    {
        const auto before = http.requests.size();
        lookup.start(title, artist, [this](const QImage &image) { found << image; });
        return http.requests.size() > before;
    }

    /// After a failure the track rests, and only then.
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
    void asksTheHostOfTheSettings();
    void failures_data();
    void failures();
    void limitsItsRate();
    void goesWhileSearching();
};

void ArtworkLookupTest::findsAndKeeps()
{
    Rig rig;
    QVERIFY(rig.start(QStringLiteral("Song")));
    QVERIFY(!rig.start(QStringLiteral("Song"))); // one at a time
    QTRY_COMPARE(rig.found.size(), 1);
    QCOMPARE(rig.found.front().size(), QSize(256, 256)); // no larger than it is ever shown
    QVERIFY(!rig.lookup.cached(QStringLiteral("Song"), QStringLiteral("Them")).isNull());
    QVERIFY(rig.lookup.cached(QStringLiteral("song"), QStringLiteral("Them")).isNull());

    // An address without a size in it is taken as it is.
    rig.result = R"({"results": [{"artworkUrl100": "https://host/plain.png"}]})";
    rig.images[QStringLiteral("https://host/plain.png")] = picture({100, 50});
    rig.start(QStringLiteral("Plain"));
    QTRY_COMPARE(rig.found.size(), 2);
    QCOMPARE(rig.found.back().size(), QSize(100, 50));

    // What is kept is bounded.
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
    QTest::addColumn<QByteArray>("term"); // empty: it is not asked for
    QTest::newRow("plain") << "Song"
                           << "Them" << QByteArray("Them%20Song");
    QTest::newRow("no artist") << "Song"
                               << "" << QByteArray("%20Song");
    QTest::newRow("left as they are") << "A&B+C?/"
                                      << "x=y" << QByteArray("x=y%20A&B+C?/");
    QTest::newRow("encoded") << QStringLiteral("\u00e9#%\"") << "[]"
                             << QByteArray("%5B%5D%20%C3%A9%23%25%22");
    QTest::newRow("no title") << ""
                              << "Them" << QByteArray();
    QTest::newRow("looks like no title") << "|x"
                                         << "Them" << QByteArray();
}

void ArtworkLookupTest::asksForTheTerm()
{
    QFETCH(QString, title);
    QFETCH(QString, artist);
    QFETCH(QByteArray, term);
    Rig rig;
    QCOMPARE(rig.start(title, artist), !term.isEmpty());
    if (!term.isEmpty()) {
        QCOMPARE(rig.http.requests.front().url.toEncoded(),
                 "https://itunes.apple.com/search?term=" + term + "&entity=song&limit=3");
    }
    rig.start(QString(QChar(0xd800)), artist); // half a character is no crash
}

void ArtworkLookupTest::asksTheHostOfTheSettings()
{
    Rig rig;
    const auto key = QStringLiteral("coverSearchHost");
    rig.store.setString(key, QString());
    QVERIFY(!rig.start(QStringLiteral("Song")));
    rig.store.setString(key, QStringLiteral("covers.example:8443"));
    QVERIFY(rig.start(QStringLiteral("Song")));
    QCOMPARE(rig.http.requests.back().url.host(), QStringLiteral("covers.example"));
    QCOMPARE(rig.http.requests.back().url.scheme(), QStringLiteral("https"));
    rig.store.setString(key, QStringLiteral("http://[::1]:80"));
    QVERIFY(rig.start(QStringLiteral("Other")));
    QCOMPARE(rig.http.requests.back().url.host(), QStringLiteral("::1"));
    for (const auto *nonsense : {"a b", "://", "http://"}) {
        rig.store.setString(key, QLatin1String(nonsense));
        rig.start(QLatin1String(nonsense));
    }
}

void ArtworkLookupTest::failures_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QByteArray>("image");
    const QByteArray good = R"({"results": [{"artworkUrl100": "https://host/a"}]})";
    QTest::newRow("not JSON") << QByteArray("<html>") << QByteArray();
    QTest::newRow("an array") << QByteArray("[]") << QByteArray();
    QTest::newRow("no results") << QByteArray("{}") << QByteArray();
    QTest::newRow("odd results") << QByteArray(R"({"results": {"a": 1}})") << QByteArray();
    QTest::newRow("empty results") << QByteArray(R"({"results": []})") << QByteArray();
    QTest::newRow("odd result") << QByteArray(R"({"results": [1]})") << QByteArray();
    QTest::newRow("second result only")
        << QByteArray(R"({"results": [{}, {"artworkUrl100": "https://host/a"}]})")
        << picture({9, 9});
    QTest::newRow("odd address") << QByteArray(R"({"results": [{"artworkUrl100": 1}]})")
                                 << QByteArray();
    QTest::newRow("no address") << QByteArray(R"({"results": [{"artworkUrl100": "::"}]})")
                                << QByteArray();
    QTest::newRow("no answer") << good << QByteArray();
    QTest::newRow("one byte") << good << QByteArray("x");
    QTest::newRow("absurd dimensions") << good << "GIF89a\xff\xff\xff\xff" + QByteArray(100, '\0');
    QTest::newRow("drawing") << good << QByteArray("<svg xmlns='http://www.w3.org/2000/svg'/>");
}

void ArtworkLookupTest::failures()
{
    QFETCH(QByteArray, json);
    QFETCH(QByteArray, image);
    Rig rig;
    rig.result = json;
    if (!image.isEmpty()) {
        rig.images[QStringLiteral("https://host/a")] = image;
    }
    rig.start(QStringLiteral("Song"));
    QVERIFY(rig.endsInFailure());

    // The failure is not held against the track for long.
    rig.result = goodResult;
    rig.clock.advance(59s);
    QVERIFY(!rig.start(QStringLiteral("Song")));
    rig.clock.advance(1s);
    QVERIFY(rig.start(QStringLiteral("Song")));
    QTRY_COMPARE(rig.found.size(), 1);
}

void ArtworkLookupTest::limitsItsRate()
{
    Rig rig;
    rig.http.pages = nullptr; // never answers
    for (int i = 0; i < 10; ++i) {
        rig.start(QString::number(i));
    }
    QCOMPARE(rig.http.requests.size(), 4U);
    for (const HttpRequest &request : rig.http.requests) {
        QCOMPARE(request.kind, rig.http.requests.front().kind); // and so one at a time
    }

    // Fifty seconds of two hundred tracks each second, none of which is known: each search is
    // over before the next track comes.
    Rig storm;
    storm.result = "{}";
    for (int i = 0; i < 10'000; ++i) {
        storm.start(QString::number(i));
        QCoreApplication::processEvents();
        storm.clock.advance(5ms);
    }
    const auto searches = storm.http.count(QStringLiteral("/search"));
    QVERIFY(searches >= 20 && searches <= 20 + 50 / 3 + 1);
}

void ArtworkLookupTest::goesWhileSearching()
{
    VirtualClock clock;
    FakeHttpGetter http;
    const MemoryStore store;
    {
        ArtworkLookup lookup(clock, http, store);
        lookup.start(QStringLiteral("Song"), {}, [](const QImage &) { QFAIL("found"); });
        QCOMPARE(http.waiting, 1);
    }
    QCOMPARE(http.waiting, 0);
    QCOMPARE(clock.runningTimers(), 0);
}

QTEST_GUILESS_MAIN(ArtworkLookupTest)
#include "ArtworkLookupTest.moc"
