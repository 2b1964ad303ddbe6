#include "platform/linux/http/QtHttpGetter.h"
#include "support/HttpServer.h"
#include "support/VirtualClock.h"

#include <QTest>

using namespace velmora;
using namespace std::chrono_literals;

class HttpGetterTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void refusesOtherThanHttps();
    void followsRedirectionsWithCare();
    void limitsTheSize();
    void oneOfAKindAtATime();
    void goesAtAnyMoment();

private:
    [[nodiscard]] HttpRequest request(const QString &path, const QString &kind = u"kind"_qs) const
    {
        return {m_server->url().resolved(QUrl(path)), kind, 100, 10s};
    }
    void pageIs(const QByteArray &path, const QByteArray &answer)
    {
        m_server->pages[path] = [answer] { return answer; };
    }
    /// What comes of a request; fails the test if nothing does.
    std::optional<HttpAnswer> get(const HttpRequest &request);
    bool isRefused(const HttpRequest &request) { return !get(request); }

    VirtualClock m_clock;
    std::unique_ptr<HttpServer> m_server;
    QtHttpGetter m_getter{m_clock};
};

void HttpGetterTest::init()
{
    m_server = std::make_unique<HttpServer>();
}

std::optional<HttpAnswer> HttpGetterTest::get(const HttpRequest &request)
{
    std::optional<HttpAnswer> result;
    bool isDone = false;
    const auto fetch = m_getter.get(request, [&](const auto &answer) {
        result = answer;
        isDone = true;
    });
    if (isDone)
        qFatal("answered inside of the call");
    if (!QTest::qWaitFor([&] { return isDone; }))
        qFatal("no answer");
    return result;
}

void HttpGetterTest::refusesOtherThanHttps()
{
    QUrl secure = m_server->url(); // which speaks no TLS
    secure.setScheme(u"https"_qs);
    for (const QUrl &url :
         {QUrl(u"http://192.0.2.1/"_qs), QUrl(u"http://localhost.example/"_qs),
          QUrl(u"file:///etc/hostname"_qs), QUrl(u"ftp://127.0.0.1/"_qs), QUrl(u"https://"_qs),
          QUrl(u"data:,x"_qs), QUrl(u"/path"_qs), QUrl(), QUrl(u"http://127.0.0.1:1/"_qs), secure})
        QVERIFY2(isRefused({url, u"kind"_qs}), qPrintable(url.toString()));
}

void HttpGetterTest::followsRedirectionsWithCare()
{
    const auto redirection = [](const QByteArray &target) {
        return "HTTP/1.1 302 Found\r\nContent-Length: 0\r\nLocation: " + target + "\r\n\r\n";
    };
    pageIs("/there", HttpServer::ok("there"));
    pageIs("/here", redirection("/there"));
    const auto answer = get(request(u"/here"_qs));
    QCOMPARE(answer->status, 200);
    QCOMPARE(answer->body, QByteArray("there"));
    pageIs("/here", redirection("/missing"));
    QCOMPARE(get(request(u"/here"_qs))->status, 404); // an error page is an answer, too
    for (const auto *target :
         {"/again", "http://192.0.2.1/", "file:///etc/hostname", "nonsense:", "https://"}) {
        pageIs("/again", redirection(target));
        QVERIFY2(isRefused(request(u"/again"_qs)), target);
    }
}

void HttpGetterTest::limitsTheSize()
{
    const QByteArray head = "HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n";
    for (const int size : {100, 101, 5000, 1'000'000}) {
        const QByteArray body(size, ' ');
        pageIs("/announced", HttpServer::ok(body));
        pageIs("/endless", head + body);
        QCOMPARE(isRefused(request(u"/announced"_qs)), size > 100);
        QCOMPARE(isRefused(request(u"/endless"_qs)), size > 100);
    }
    pageIs("/lie", "HTTP/1.1 200 OK\r\nContent-Length: 99999999999\r\n\r\n");
    QVERIFY(isRefused(request(u"/lie"_qs)));
    pageIs("/cut", "HTTP/1.1 200 OK\r\nContent-Length: 90\r\n\r\nno more");
    QVERIFY(isRefused(request(u"/cut"_qs)));
}

/// Also of one that is never answered, for which nobody waits longer than it says.
void HttpGetterTest::oneOfAKindAtATime()
{
    for (const auto *path : {"/a", "/b", "/c", "/other"})
        pageIs(path, {});
    std::map<QString, HttpHandle> fetches;
    QStringList failed;
    const auto start = [&](const QString &path, const QString &kind) {
        fetches[path] = m_getter.get(request(path, kind), [&failed, path](const auto &answer) {
            if (!answer)
                failed << path;
        });
    };
    for (const auto &path : {u"/a"_qs, u"/b"_qs, u"/c"_qs, u"/d"_qs})
        start(path, u"kind"_qs);
    start(u"/other"_qs, u"another kind"_qs);
    QTRY_COMPARE(m_server->requests.size(), 2);
    QVERIFY(m_server->count("/a") && m_server->count("/other"));
    // The newest one is next, without those that were called off.
    fetches.erase(u"/d"_qs);
    fetches.erase(u"/a"_qs);
    QTRY_COMPARE(m_server->requests.size(), 3);
    QCOMPARE(m_server->requests.back(), QByteArray("/c"));
    m_clock.advance(9999ms);
    QCOMPARE(failed, QStringList());
    m_clock.advance(1ms);
    QCOMPARE(failed, (QStringList{u"/other"_qs, u"/c"_qs}));
    QTRY_COMPARE(m_server->requests.size(), 4);
    QCOMPARE(m_server->requests.back(), QByteArray("/b"));
}

void HttpGetterTest::goesAtAnyMoment()
{
    pageIs("/page", HttpServer::ok("body"));
    HttpHandle fetch;
    bool isDone = false;
    fetch = m_getter.get(request(u"/page"_qs), [&](const auto &) {
        fetch.reset(); // its own
        isDone = true;
    });
    QTRY_VERIFY(isDone);
    for (int turns = 0; turns < 5; ++turns) {
        const auto brief =
            m_getter.get(request(u"/page"_qs), [](const auto &) { QFAIL("answered"); });
        for (int turn = 0; turn < turns && m_server->requests.size() < turns + 2; ++turn)
            QCoreApplication::processEvents(QEventLoop::ExcludeSocketNotifiers);
    }
    QCOMPARE(m_clock.runningTimers(), 0);
}

QTEST_GUILESS_MAIN(HttpGetterTest)
#include "HttpGetterTest.moc"
