#include "config/NotchProfile.h"

#include <QSet>
#include <QTest>

using namespace velmora;

namespace
{

/// A well-formed record; `changes` are pairs of a piece of it and what to put there instead.
QByteArray record(std::initializer_list<std::pair<const char *, const char *>> changes = {})
{
    QByteArray text = R"({"id":"01234567-89AB-CDEF-0123-456789ABCDEF","name":"Wörk",)"
                      R"("farLeftWidget":"media","leftWidget":"pomodoro","centerWidget":"weather",)"
                      R"("rightWidget":"systemMonitor","farRightWidget":"dropActions"})";
    for (const auto &[piece, replacement] : changes) {
        Q_ASSERT(text.contains(piece));
        text.replace(piece, replacement);
    }
    return text;
}

QByteArray listOf(const QByteArray &records)
{
    return '[' + records + ']';
}

NotchProfile recordedProfile()
{
    using enum NotchWidgetType;
    return {QUuid(QStringLiteral("{01234567-89ab-cdef-0123-456789abcdef}")),
            QStringLiteral("Wörk"),
            media,
            pomodoro,
            weather,
            systemMonitor,
            dropActions};
}

} // namespace

class NotchProfileTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void catalogue();
    void roundTrip();
    void tolerated_data();
    void tolerated();
    void rejected_data();
    void rejected();
};

void NotchProfileTest::catalogue()
{
    // The stored texts are a file format: they must never change.
    const char *const stored[] = {"none",        "media",       "clock",         "volume",
                                  "network",     "weather",     "dayProgress",   "quote",
                                  "appLauncher", "quickToggle", "calendar",      "todo",
                                  "pomodoro",    "bluetooth",   "systemMonitor", "dropActions"};
    QSet<QString> names;
    QSet<QString> icons;
    qsizetype position = 0;
    for (const NotchWidgetType type : allWidgetTypes()) {
        QCOMPARE(rawValue(type), QLatin1String(stored[position]));
        QCOMPARE(widgetTypeFromRawValue(rawValue(type)), std::optional(type));
        QVERIFY(!widgetTypeFromRawValue(displayName(type)));
        names << displayName(type);
        icons << iconName(type);
        ++position;
        QCOMPARE(names.size(), position);
        QCOMPARE(icons.size(), position);
    }
    for (const char *text : {"", "Clock", "CLOCK", "clock ", " clock", "clocks", "cloc", "Empty"}) {
        QVERIFY2(!widgetTypeFromRawValue(QString::fromLatin1(text)), text);
    }
    QVERIFY(!widgetTypeFromRawValue(QStringLiteral("clock").append(QChar(0))));
    QCOMPARE(displayName(NotchWidgetType::none), QStringLiteral("Empty"));
    QCOMPARE(displayName(NotchWidgetType::quickToggle), QStringLiteral("Quick Toggles"));
}

void NotchProfileTest::roundTrip()
{
    QCOMPARE(encodeProfiles({recordedProfile()}).value_or(QByteArray()), listOf(record()));
    QCOMPARE(encodeProfiles({}).value_or(QByteArray()), QByteArray("[]"));
    std::vector<NotchProfile> profiles = NotchProfile::builtIn();
    for (const QString &name :
         {QString(), QStringLiteral("\"quoted\" \\ \n\t/"), QStringLiteral("\U0001F310 \u202E a"),
          QString(QChar(0)), QString(100'000, QLatin1Char('x'))}) {
        profiles.push_back(recordedProfile());
        profiles.back().name = name;
    }
    const auto decoded = decodeProfiles(encodeProfiles(profiles).value_or(QByteArray()));
    QVERIFY(decoded);
    QCOMPARE(decoded->size(), profiles.size());
    for (std::size_t i = 0; i < profiles.size(); ++i) {
        QVERIFY2(decoded->at(i) == profiles.at(i), qPrintable(profiles.at(i).name.left(20)));
    }
}

void NotchProfileTest::tolerated_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<int>("count");
    QTest::addColumn<QString>("center");

    const auto center = [](const char *value) { return listOf(record({{R"("weather")", value}})); };
    const QString weather = QStringLiteral("weather");
    const QString none = QStringLiteral("none");
    QTest::newRow("as written") << listOf(record()) << 1 << weather;
    QTest::newRow("lower-case id") << listOf(record({{"89AB-CDEF", "89ab-cdef"}})) << 1 << weather;
    QTest::newRow("widget in capitals") << center(R"("Weather")") << 1 << none;
    QTest::newRow("widget of a later version") << center(R"("teleport")") << 1 << none;
    QTest::newRow("empty widget") << center(R"("")") << 1 << none;
    QTest::newRow("keys not known")
        << listOf(record({{R"("name")", R"("version":[1,{"a":null}],"name")"}})) << 1 << weather;
    QTest::newRow("the last of two equal keys counts")
        << center(R"("media","centerWidget":"weather")") << 1 << weather;
    QTest::newRow("blanks and line ends") << " [ \r\n" + record() + "\t,\n" + record() + " ] \n"
                                          << 2 << weather;
    QTest::newRow("5 MB of good records")
        << listOf(QByteArray(record() + ',').repeated(25'000) + record()) << 25'001 << weather;
    QTest::newRow("empty list") << QByteArray("[]") << 0 << QString();
}

void NotchProfileTest::tolerated()
{
    QFETCH(const QByteArray, data);
    QFETCH(const int, count);
    QFETCH(const QString, center);
    const auto profiles = decodeProfiles(data);
    QVERIFY(profiles);
    QCOMPARE(profiles->size(), static_cast<std::size_t>(count));
    if (count > 0) {
        NotchProfile expected = recordedProfile();
        expected.centerWidget = widgetTypeFromRawValue(center).value();
        QVERIFY(profiles->front() == expected);
        QCOMPARE(profiles->back().id, expected.id);
    }
}

void NotchProfileTest::rejected_data()
{
    QTest::addColumn<QByteArray>("data");

    for (const char *key : {"id", "name", "farLeftWidget", "leftWidget", "centerWidget",
                            "rightWidget", "farRightWidget"}) {
        const QByteArray quoted = '"' + QByteArray(key) + '"';
        const QByteArray missing = record({{quoted.constData(), R"("other")"}});
        QTest::addRow("one record of two lacks %s", key) << listOf(record() + ',' + missing);
        for (const char *value : {"null", "7", "true", R"(["clock"])", "{}"}) {
            // The value goes in under the key, the old one under another.
            const QByteArray change = quoted + ':' + value + R"(,"other")";
            QTest::addRow("%s is %s", key, value)
                << listOf(record({{quoted.constData(), change.constData()}}));
        }
    }
    for (const char *id :
         {"", "01234567", "{01234567-89AB-CDEF-0123-456789ABCDEF}",
          "0123456789ABCDEF0123456789ABCDEF", "01234567-89AB-CDEF-0123-456789ABCDEG",
          "01234567-89AB-CDEF-0123-456789ABCDEF0", "01234567-89AB-CDEF-0123-456789ABCDEF\\n"}) {
        QTest::addRow("id \"%s\"", id)
            << listOf(record({{"01234567-89AB-CDEF-0123-456789ABCDEF", id}}));
    }
    const QByteArray good = listOf(record());
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("no array") << record();
    QTest::newRow("null") << QByteArray("null");
    QTest::newRow("array of numbers") << QByteArray("[1,2]");
    QTest::newRow("array of arrays") << listOf(good);
    QTest::newRow("cut short") << good.chopped(1);
    QTest::newRow("text behind") << good + "x";
    QTest::newRow("trailing comma") << listOf(record() + ',');
    QTest::newRow("comment") << listOf("/* */" + record());
    QTest::newRow("UTF-8 cut short") << listOf(record({{"W\xC3\xB6rk", "W\xC3"}}));
    QTest::newRow("Latin-1") << listOf(record({{"W\xC3\xB6rk", "W\xF6rk"}}));
    QTest::newRow("surrogate in UTF-8") << listOf(record({{"W\xC3\xB6rk", "\xED\xA0\x80"}}));
    QTest::newRow("deep arrays") << QByteArray(100'000, '[');
    QTest::newRow("deep closed arrays") << QByteArray(100'000, '[') + QByteArray(100'000, ']');
    QTest::newRow("deep objects") << "[" + QByteArray(R"({"id":)").repeated(100'000);
    QTest::newRow("5 MB of noise") << QByteArray(5'000'000, '\xFF');
    QTest::newRow("5 MB in one name") << "[{\"name\":\"" + QByteArray(5'000'000, 'x') + "\"}]";
}

void NotchProfileTest::rejected()
{
    QFETCH(const QByteArray, data);
    QVERIFY(!decodeProfiles(data));
}

QTEST_GUILESS_MAIN(NotchProfileTest)
#include "NotchProfileTest.moc"
