#include "media/ArtworkLookup.h"

#include "support/EncodedImages.h"
#include "support/FakeHttpGetter.h"
#include "support/MemoryStore.h"
#include "support/VirtualClock.h"

#include <QHash>
#include <QTest>

using namespace velmora;
using namespace std::chrono_literals;

namespace
{

const auto goodResult =
    QByteArray(R"({"results": [{"artworkUrl100": "https://host/100x100bb.jpg"}]})");

struct Rig {
    VirtualClock clock;
    FakeHttpGetter http;
    MemoryStore store;
    ArtworkLookup lookup{clock, http, store};
    QByteArray result = goodResult;
    QHash<QString, QByteArray> images{
        {u"https://host/600x600bb.jpg"_qs, encoded(QSize(600, 600), "jpg")}};
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
    bool start(const QString &title, const QString &artist = u"Them"_qs)
    {
        const auto before = http.requests.size();
        lookup.start(title, artist, [this](const QImage &image) { found << image; });
        return http.requests.size() > before;
    }
};

} // namespace

class ArtworkLookupTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void findsAndKeeps();
    void asksForTheTerm();
    void failures();
    void limitsItsRate();
};

void ArtworkLookupTest::findsAndKeeps()
{
    Rig rig;
    QVERIFY(rig.start(u"Song"_qs));
    QVERIFY(!rig.start(u"Song"_qs)); // one at a time
    QTRY_COMPARE(rig.found.size(), 1);
    QCOMPARE(rig.found.front().size(), QSize(256, 256)); // no larger than it is ever shown
    QVERIFY(!rig.lookup.cached(u"Song"_qs, u"Them"_qs).isNull());
    QVERIFY(rig.lookup.cached(u"song"_qs, u"Them"_qs).isNull());

    // An address without a size in it is taken as it is.
    rig.result = R"({"results": [{"artworkUrl100": "https://host/plain.png"}]})";
    rig.images[u"https://host/plain.png"_qs] = encoded(QSize(100, 50), "png");
    rig.start(u"Plain"_qs);
    QTRY_COMPARE(rig.found.size(), 2);
    QCOMPARE(rig.found.back().size(), QSize(100, 50));

    // What is kept is bounded.
    for (int i = 0; i < 30; ++i) {
        rig.clock.advance(3s);
        rig.start(QString::number(i));
        QTRY_COMPARE(rig.found.size(), 3 + i);
    }
    QVERIFY(rig.lookup.cached(u"Song"_qs, u"Them"_qs).isNull());
    QVERIFY(!rig.lookup.cached(u"29"_qs, u"Them"_qs).isNull());
}

void ArtworkLookupTest::asksForTheTerm()
{
    const struct {
        QString title, artist;
        QByteArray term; // empty: it is not asked for
    } cases[] = {
        {u"Song"_qs, u"Them"_qs, "Them%20Song"},
        {u"Song"_qs, {}, "%20Song"},
        {u"A&B+C?/"_qs, u"x=y"_qs, "x=y%20A&B+C?/"},
        {u"\u00e9#%\""_qs, u"[]"_qs, "%5B%5D%20%C3%A9%23%25%22"},
        {{}, u"Them"_qs, {}},
        {u"|x"_qs, u"Them"_qs, {}}, // looks like no title
    };
    for (const auto &[title, artist, term] : cases) {
        Rig rig;
        QCOMPARE(rig.start(title, artist), !term.isEmpty());
        if (!term.isEmpty()) {
            QCOMPARE(rig.http.requests.front().url.toEncoded(),
                     "https://itunes.apple.com/search?term=" + term + "&entity=song&limit=3");
        }
    }
    Rig().start(QString(QChar(0xd800))); // half a character is no crash

    // The host is a setting; without one nothing is asked.
    Rig rig;
    const auto key = u"coverSearchHost"_qs;
    rig.store.setString(key, QString());
    QVERIFY(!rig.start(u"Song"_qs));
    rig.store.setString(key, u"covers.example:8443"_qs);
    QVERIFY(rig.start(u"Song"_qs));
    QCOMPARE(rig.http.requests.back().url.host(), u"covers.example"_qs);
    QCOMPARE(rig.http.requests.back().url.scheme(), u"https"_qs);
    rig.store.setString(key, u"http://[::1]:80"_qs);
    QVERIFY(rig.start(u"Other"_qs));
    QCOMPARE(rig.http.requests.back().url.host(), u"::1"_qs);
}

void ArtworkLookupTest::failures()
{
    const QByteArray good = R"({"results": [{"artworkUrl100": "https://host/a"}]})";
    const std::pair<QByteArray, QByteArray> answers[] = {
        {"<html>", {}},
        {R"({"results": {"a": 1}})", {}},
        {R"({"results": []})", {}},
        {R"({"results": [{}, {"artworkUrl100": "https://host/a"}]})", encoded(QSize(9, 9), "png")},
        {R"({"results": [{"artworkUrl100": "::"}]})", {}},
        {good, {}},
        {good, "no picture"},
    };
    for (const auto &[json, image] : answers) {
        Rig rig;
        rig.result = json;
        if (!image.isEmpty())
            rig.images[u"https://host/a"_qs] = image;
        rig.start(u"Song"_qs);
        // After a failure, and only then, the track rests, but not for long.
        QTRY_COMPARE(rig.clock.runningTimers(), 1);
        QVERIFY2(rig.found.isEmpty(), json.constData());
        rig.result = goodResult;
        rig.clock.advance(59s);
        QVERIFY(!rig.start(u"Song"_qs));
        rig.clock.advance(1s);
        QVERIFY(rig.start(u"Song"_qs));
        QTRY_COMPARE(rig.found.size(), 1);
    }
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
    { // What is under way ends with it.
        ArtworkLookup brief(rig.clock, rig.http, rig.store);
        brief.start(u"Song"_qs, {}, [](const QImage &) { QFAIL("found"); });
        QCOMPARE(rig.http.waiting, 5);
    }
    QCOMPARE(rig.http.waiting, 4);

    // Fifty seconds of two hundred tracks each second, none of which is known: each search is
    // over before the next track comes.
    Rig storm;
    storm.result = "{}";
    for (int i = 0; i < 10'000; ++i) {
        storm.start(QString::number(i));
        QCoreApplication::processEvents();
        storm.clock.advance(5ms);
    }
    const auto searches = storm.http.count(u"/search"_qs);
    QVERIFY(searches >= 20 && searches <= 20 + 50 / 3 + 1);
}

QTEST_GUILESS_MAIN(ArtworkLookupTest)
#include "ArtworkLookupTest.moc"
