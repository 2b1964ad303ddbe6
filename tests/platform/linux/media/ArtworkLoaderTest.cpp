#include "platform/linux/media/ArtworkLoader.h"

#include "imaging/CoverImage.h"
#include "support/EncodedImages.h"
#include "support/FakeHttpGetter.h"
#include "support/VirtualClock.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

using namespace velmora;
using namespace std::chrono_literals;
using State = ArtworkLoader::State;

namespace
{

bool write(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

} // namespace

class ArtworkLoaderTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void decodesCovers();
    void readsAddresses();
    void loadsTheNewestWishOnly();
    void fetchesOverHttp();
    void diesWithWishesUnderWay();

private:
    /// Wishes and waits for the end.
    State load(const QString &address);

    QTemporaryDir m_folder;
    VirtualClock m_clock;
    FakeHttpGetter m_http;
    ArtworkLoader m_loader{m_clock, m_http};
};

State ArtworkLoaderTest::load(const QString &address)
{
    m_clock.advance(1s);
    m_loader.want(address);
    if (!QTest::qWaitFor([this] { return m_loader.state() != State::Loading; }))
        qWarning() << "Never settled:" << address.left(100);
    return m_loader.state();
}

void ArtworkLoaderTest::decodesCovers()
{
    QCOMPARE(decodeCover(encoded(QSize(3000, 1000), "jpg")).size(), QSize(256, 85));
    QCOMPARE(decodeCover(encoded(QSize(2000, 1), "png")).size(), QSize(256, 1));
    const QImage wide = QImage::fromData(encoded(QSize(240, 100), "png"));
    QCOMPARE(decodeCover(turnedJpeg(wide, 6)).size(), QSize(100, 240));

    // Among them a drawing, one that is cut off, and absurd sizes.
    for (const QByteArray &bytes : {QByteArray(), QByteArray("hello"),
                                    QByteArray("<svg xmlns='http://www.w3.org/2000/svg'/>"),
                                    encoded(QSize(100, 100), "png").left(60), claiming(8000, 8000),
                                    claiming(0x7fffffff, 0x7fffffff), claiming(0, 0)})
        QVERIFY2(decodeCover(bytes).isNull(), bytes.left(8).toHex().constData());
}

void ArtworkLoaderTest::readsAddresses()
{
    const QByteArray png = encoded(QSize(20, 10), "png");
    const QString path = m_folder.filePath(u"a b"_qs);
    QVERIFY(write(path, png));
    const QString escaped = QString(path).replace(u' ', u"%20"_qs);
    const auto base64 = QString::fromLatin1(png.toBase64());
    const auto percent = QString::fromLatin1(png.toPercentEncoding());
    for (const QString &good : {path, u"file://%1"_qs.arg(path), u"FILE://%1"_qs.arg(escaped),
                                u"data:image/png;base64,"_qs + base64, u"data:,"_qs + percent}) {
        QCOMPARE(load(good), State::Ready);
        QCOMPARE(m_loader.image().size(), QSize(20, 10));
    }

    const QString big = m_folder.filePath(u"big.png"_qs);
    QVERIFY(write(big, png) && QFile::resize(big, 50'000'000));
    const QString pipe = m_folder.filePath(u"pipe"_qs);
    QCOMPARE(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    for (const QString &bad :
         {big, pipe, m_folder.path(), path + u'x', u"/dev/zero"_qs, u"file:///dev/zero"_qs,
          u"data:image/png;base64"_qs, u"ftp://x/y"_qs, u"cover.png"_qs, u"file:"_qs}) {
        QCOMPARE(load(bad), State::Failed);
        QVERIFY(m_loader.image().isNull());
    }
    QCOMPARE(load(QString()), State::None);

    // A file is decoded once, until it is written anew.
    QCOMPARE(load(path), State::Ready);
    const qint64 first = m_loader.image().cacheKey();
    QCOMPARE(load(path), State::Ready);
    QCOMPARE(m_loader.image().cacheKey(), first);
    QVERIFY(write(path, encoded(QSize(20, 20), "png")));
    QCOMPARE(load(path), State::Ready);
    QCOMPARE(m_loader.image().size(), QSize(20, 20));
}

void ArtworkLoaderTest::loadsTheNewestWishOnly()
{
    for (int i = 0; i < 1000; ++i)
        QVERIFY(write(m_folder.filePath(QString::number(i)), encoded(QSize(i + 1, 1), "png")));
    QSignalSpy settled(&m_loader, &ArtworkLoader::settled);
    m_clock.advance(1s);
    for (int i = 0; i < 1000; ++i)
        m_loader.want(m_folder.filePath(QString::number(i)));
    QTRY_VERIFY((m_clock.advance(10ms), m_loader.state() == State::Ready));
    QCOMPARE(m_loader.image().width(), coverSide);
    QCOMPARE(m_loader.image().height(), 1);
    QCOMPARE(settled.size(), 1);
}

void ArtworkLoaderTest::fetchesOverHttp()
{
    const auto host = u"https://host/"_qs;
    m_http.pages = [](const QString &url) {
        return url.endsWith(u"gone") ? std::nullopt : std::optional(encoded(QSize(30, 30), "jpg"));
    };
    QCOMPARE(load(host + u'a'), State::Ready);
    QCOMPARE(load(host + u'b'), State::Ready);
    QCOMPARE(load(host + u'a'), State::Ready); // remembered
    QCOMPARE(m_http.requests.size(), 2U);
    QCOMPARE(load(host + u"gone"_qs), State::Failed);

    // A slow server does not hold up the next track, and the same wish is not sent twice.
    m_http.pages = nullptr;
    m_clock.advance(1s);
    m_loader.want(host + u"slow"_qs);
    m_loader.want(host + u"slow"_qs);
    QCOMPARE(m_http.requests.size(), 4U);
    QCOMPARE(m_http.waiting, 1);
    QCOMPARE(load(host + u'b'), State::Ready);
    QCOMPARE(m_http.waiting, 0);

    m_clock.advance(1s);
    m_loader.want(host + u"never"_qs);
    QCOMPARE(m_http.waiting, 1);
    m_clock.advance(20s);
    QCOMPARE(m_loader.state(), State::Failed);
    QCOMPARE(m_http.waiting, 0);
}

void ArtworkLoaderTest::diesWithWishesUnderWay()
{
    const QString path = m_folder.filePath(u"last"_qs);
    QVERIFY(write(path, encoded(QSize(2000, 2000), "png")));
    for (const QString &address : {path, u"https://host/x"_qs}) {
        ArtworkLoader loader(m_clock, m_http);
        connect(&loader, &ArtworkLoader::settled, [] { QFAIL("settled"); });
        loader.want(address);
    }
    QCoreApplication::processEvents();
}

QTEST_GUILESS_MAIN(ArtworkLoaderTest)
#include "ArtworkLoaderTest.moc"
