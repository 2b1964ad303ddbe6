#include "drop/DropConfig.h"

#include "drop/FileNaming.h"
#include "platform/LocalPath.h"

#include <QSet>
#include <QTest>

using namespace velmora;

namespace
{

/// A well-formed record; `piece` of it replaced.
QByteArray record(const char *piece = "", const char *replacement = "")
{
    QByteArray text = R"({"enabledActions":["trash","airDrop"],"shelfFolderPath":"/home/a/Shelf",)"
                      R"("copyFolderPath":"/home/a","moveFolderPath":"/mnt/ö",)"
                      R"("imageConvertFormat":"JPEG"})";
    Q_ASSERT(text.contains(piece));
    return *piece == '\0' ? text : text.replace(piece, replacement);
}

DropConfig recorded()
{
    return {{DropActionID::trash, DropActionID::airDrop},
            "/home/a/Shelf",
            "/home/a",
            "/mnt/ö",
            QStringLiteral("JPEG")};
}

} // namespace

class DropConfigTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void catalogue();
    void storedForm();
    void rejected_data();
    void rejected();
    void names_data();
    void names();
    void archiveArguments();
    void pathsKeepTheirBytes_data();
    void pathsKeepTheirBytes();
    void urlsOfNoFile();
};

void DropConfigTest::catalogue()
{
    // The stored texts are a file format: they must never change.
    const char *const stored[] = {"shelf", "airDrop",  "zip",   "unzip", "imageConvert", "copy",
                                  "move",  "openWith", "music", "trash", "eject"};
    QSet<QString> labels;
    int position = 0;
    for (const DropActionID action : allDropActions()) {
        QCOMPARE(rawValue(action), QLatin1String(stored[position]));
        QCOMPARE(dropActionFromRawValue(rawValue(action)), std::optional(action));
        QCOMPARE(color(action).alpha(), 255);
        labels << label(action);
        ++position;
    }
    QCOMPARE(labels.size(), position);
    QVERIFY(!dropActionFromRawValue(QStringLiteral("Zip")));
    QCOMPARE(label(DropActionID::openWith), QStringLiteral("Open With"));
    QCOMPARE(color(DropActionID::zip), QColor::fromRgbF(1.0F, 0.75F, 0.3F));
}

void DropConfigTest::storedForm()
{
    QCOMPARE(encodeDropConfig(recorded()), std::optional(record()));
    const auto config = decodeDropConfig(
        "\n { \"other\": [1] ,\"imageConvertFormat\":\"\",\"moveFolderPath\":\"/m\","
        "\"copyFolderPath\":\"/c\",\"shelfFolderPath\":\"/s\",\"enabledActions\":[]}\n");
    QVERIFY(config);
    QVERIFY(config->enabledActions.empty());
    QCOMPARE(config->moveFolderPath, QByteArray("/m"));
    QCOMPARE(config->imageConvertFormat, QString());
    // JSON cannot tell such a path.
    DropConfig unreadable = recorded();
    unreadable.copyFolderPath = "/\xFF";
    QVERIFY(!encodeDropConfig(unreadable));
}

void DropConfigTest::rejected_data()
{
    QTest::addColumn<QByteArray>("data");
    for (const char *key : {"enabledActions", "shelfFolderPath", "copyFolderPath", "moveFolderPath",
                            "imageConvertFormat"}) {
        QTest::addRow("no %s", key) << record(key, "else");
        const QByteArray quoted = '"' + QByteArray(key) + "\":";
        for (const char *value : {"null", "7", "true", "{}", "[7]", R"(["print"])"}) {
            const QByteArray replacement = quoted + value + R"(,"else":)";
            QTest::addRow("%s is %s", key, value)
                << record(quoted.constData(), replacement.constData());
        }
    }
    QTest::newRow("one unknown action") << record("\"trash\"", "\"trash\",\"print\"");
    QTest::newRow("wrong case") << record("airDrop", "AirDrop");
    QTest::newRow("cut short") << record().chopped(1);
    QTest::newRow("no UTF-8") << record("ö", "\xF6");
    QTest::newRow("an array") << "[" + record() + "]";
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("deep") << QByteArray("{\"enabledActions\":").repeated(100'000);
}

void DropConfigTest::rejected()
{
    QFETCH(const QByteArray, data);
    QVERIFY(!decodeDropConfig(data));
}

void DropConfigTest::names_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("extension");
    QTest::addColumn<QByteArray>("second");
    const auto row = [](const char *name, const char *extension, const char *second) {
        QTest::newRow(QByteArray(name).toPercentEncoding().constData())
            << QByteArray(name) << QByteArray(extension) << QByteArray(second);
    };
    row("report.pdf", "pdf", "report 2.pdf");
    row("notes", "", "notes 2");
    row("x.app", "app", "x 2.app");
    row("a.tar.gz", "gz", "a.tar 2.gz");
    row(".profile", "", ".profile 2");
    row("end.", "", "end. 2");
    row("..a", "a", ". 2.a");
    row("\xFF\n.\xFE", "\xFE", "\xFF\n 2.\xFE");
}

void DropConfigTest::names()
{
    QFETCH(const QByteArray, name);
    QFETCH(const QByteArray, extension);
    QFETCH(const QByteArray, second);
    QCOMPARE(uniqueURL(name, 0), name);
    QCOMPARE(uniqueURL(name, 2), second);
    QCOMPARE(pathExtension("/a.b/" + name), extension);
    const QByteArray stem = withoutPathExtension("/a.b/" + name);
    QCOMPARE(extension.isEmpty() ? stem : stem + '.' + extension, "/a.b/" + name);
}

void DropConfigTest::archiveArguments()
{
    QCOMPARE(unzipArgument("/a b/c\\d.zip"), QByteArray("/a b/c\\d.zip"));
    QCOMPARE(unzipArgument("/a[/c*?.zip"), QByteArray("/a[/c[*][?].zip"));
    QCOMPARE(unzipArgument("/a/b[1]\\.zip"), QByteArray("/a/b[[]1]\\\\.zip"));
}

void DropConfigTest::pathsKeepTheirBytes_data()
{
    QTest::addColumn<QByteArray>("path");
    for (const char *path : {"/", "/a b/c", "/\"'\n\t\\;", "/-rf", "/%41?#[]", "/\xFF\xC3(", "/ö€",
                             "/a/../b", "/~", "/a:b@c"}) {
        QTest::newRow(QByteArray(path).toPercentEncoding("/").constData()) << QByteArray(path);
    }
}

void DropConfigTest::pathsKeepTheirBytes()
{
    QFETCH(const QByteArray, path);
    QCOMPARE(localPath(fileUrl(path)), std::optional(path));
    // As it comes from another program, in a list of URIs.
    QCOMPARE(localPath(QUrl::fromEncoded(fileUrl(path).toEncoded())), std::optional(path));
    QCOMPARE(localPath(QUrl(QString::fromLatin1(fileUrl(path + "//").toEncoded()))),
             std::optional(path));
}

void DropConfigTest::urlsOfNoFile()
{
    for (const char *url : {"", "http://host/a", "file://host/a", "file:a", "relative", "data:,x",
                            "file:///a%2Fb", "file:///a%00b", "trash:///a"}) {
        QVERIFY2(!localPath(QUrl::fromEncoded(url)), url);
    }
    QCOMPARE(localPath(QUrl(QStringLiteral("file://localhost/a/"))),
             std::optional(QByteArray("/a")));
    QCOMPARE(readableName("/b/a\n\xFFz"), QStringLiteral("a\uFFFD\uFFFDz"));
}

QTEST_GUILESS_MAIN(DropConfigTest)
#include "DropConfigTest.moc"
