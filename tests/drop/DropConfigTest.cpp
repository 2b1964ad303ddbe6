#include "drop/DropConfig.h"

#include "drop/FileNaming.h"
#include "platform/LocalPath.h"

#include <QTest>

using namespace velmora;

namespace
{

/// A well-formed record; `piece` of it replaced.
QByteArray record(const QByteArray &piece = {}, const QByteArray &replacement = {})
{
    QByteArray text = R"({"enabledActions":["trash","airDrop"],"shelfFolderPath":"/home/a/Shelf",)"
                      R"("copyFolderPath":"/home/a","moveFolderPath":"/mnt/ö",)"
                      R"("imageConvertFormat":"JPEG"})";
    Q_ASSERT(text.contains(piece));
    return piece.isEmpty() ? text : text.replace(piece, replacement);
}

DropConfig recorded()
{
    return {{DropActionID::trash, DropActionID::airDrop},
            fileUrl("/home/a/Shelf"),
            fileUrl("/home/a"),
            fileUrl("/mnt/ö"),
            QStringLiteral("JPEG")};
}

} // namespace

class DropConfigTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void catalogue();
    void storedForm();
    void rejected();
    void names();
    void paths();
};

void DropConfigTest::catalogue()
{
    // The stored texts are a file format: they must never change.
    const QStringList stored{u"shelf"_qs,        u"airDrop"_qs, u"zip"_qs,  u"unzip"_qs,
                             u"imageConvert"_qs, u"copy"_qs,    u"move"_qs, u"openWith"_qs,
                             u"music"_qs,        u"trash"_qs,   u"eject"_qs};
    QStringList values;
    for (const DropActionID action : allDropActions()) {
        values << rawValue(action);
        QCOMPARE(dropActionFromRawValue(rawValue(action)), std::optional(action));
    }
    QCOMPARE(values, stored);
    QVERIFY(!dropActionFromRawValue(u"Zip"_qs));
}

void DropConfigTest::storedForm()
{
    QCOMPARE(encodeDropConfig(recorded()), std::optional(record()));
    const auto config = decodeDropConfig(
        "\n { \"other\": [1] ,\"imageConvertFormat\":\"\",\"moveFolderPath\":\"/m/\","
        "\"copyFolderPath\":\"/c\",\"shelfFolderPath\":\"/s\",\"enabledActions\":[]}\n");
    QVERIFY(config && config->enabledActions.empty());
    QCOMPARE(config->moveFolder, fileUrl("/m"));
    QCOMPARE(config->imageConvertFormat, QString());
    // JSON cannot tell such a path.
    DropConfig unreadable = recorded();
    unreadable.copyFolder = fileUrl("/\xFF");
    QVERIFY(!encodeDropConfig(unreadable));
}

void DropConfigTest::rejected()
{
    QList<QByteArray> records{record("\"trash\"", "\"trash\",\"print\""),
                              record("airDrop", "AirDrop"),
                              record().chopped(1),
                              record("ö", "\xF6"),
                              "[" + record() + "]",
                              QByteArray(),
                              QByteArray("{\"enabledActions\":").repeated(100'000)};
    for (const char *key : {"enabledActions", "shelfFolderPath", "copyFolderPath", "moveFolderPath",
                            "imageConvertFormat"}) {
        records << record(key, "else");
        const QByteArray quoted = '"' + QByteArray(key) + "\":";
        for (const char *value : {"null", "7", "true", "{}", "[7]", R"(["print"])"}) {
            records << record(quoted, quoted + value + R"(,"else":)");
        }
    }
    for (const QByteArray &data : std::as_const(records)) {
        QVERIFY2(!decodeDropConfig(data), data.left(500).constData());
    }
}

void DropConfigTest::names()
{
    const struct {
        QByteArray name, extension, second;
    } cases[] = {
        {"report.pdf", "pdf", "report 2.pdf"},
        {"notes", "", "notes 2"},
        {"a.tar.gz", "gz", "a.tar 2.gz"},
        {".profile", "", ".profile 2"},
        {"end.", "", "end. 2"},
        {"..a", "a", ". 2.a"},
        {"\xFF\n.\xFE", "\xFE", "\xFF\n 2.\xFE"},
    };
    for (const auto &[name, extension, second] : cases) {
        QCOMPARE(uniqueURL(name, 0), name);
        QCOMPARE(uniqueURL(name, 2), second);
        QCOMPARE(pathExtension("/a.b/" + name), extension);
        const QByteArray stem = withoutPathExtension("/a.b/" + name);
        QCOMPARE(extension.isEmpty() ? stem : stem + '.' + extension, "/a.b/" + name);
    }
    QCOMPARE(unzipArgument("/a b/c\\d.zip"), QByteArray("/a b/c\\d.zip"));
    QCOMPARE(unzipArgument("/a[/c*?.zip"), QByteArray("/a[/c[*][?].zip"));
    QCOMPARE(unzipArgument("/a/b[1]\\.zip"), QByteArray("/a/b[[]1]\\\\.zip"));
}

void DropConfigTest::paths()
{
    for (const QByteArray path : {"/", "/a b/c", "/\"'\n\t\\;", "/-rf", "/%41?#[]", "/\xFF\xC3(",
                                  "/ö€", "/a/../b", "/~", "/a:b@c"}) {
        QCOMPARE(localPath(fileUrl(path)), std::optional(path));
        // As it comes from another program, in a list of URIs.
        QCOMPARE(localPath(QUrl::fromEncoded(fileUrl(path).toEncoded())), std::optional(path));
        QCOMPARE(localPath(QUrl(QString::fromLatin1(fileUrl(path + "//").toEncoded()))),
                 std::optional(path));
    }
    for (const char *url : {"", "http://host/a", "file://host/a", "file:a", "relative", "data:,x",
                            "file:///a%2Fb", "file:///a%00b", "trash:///a"}) {
        QVERIFY2(!localPath(QUrl::fromEncoded(url)), url);
    }
    QCOMPARE(localPath(QUrl(u"file://localhost/a/"_qs)), std::optional(QByteArray("/a")));
    QCOMPARE(readableName("/b/a\n\xFFz"), QStringLiteral("a\uFFFD\uFFFDz"));
}

QTEST_GUILESS_MAIN(DropConfigTest)
#include "DropConfigTest.moc"
