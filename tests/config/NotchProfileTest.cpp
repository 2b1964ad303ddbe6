#include "config/NotchProfile.h"

#include <QTest>

using namespace velmora;
using namespace Qt::StringLiterals;

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
    return {QUuid(u"{01234567-89ab-cdef-0123-456789abcdef}"_s),
            u"Wörk"_s,
            {media, pomodoro, weather, systemMonitor, dropActions}};
}

} // namespace

class NotchProfileTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void catalogue();
    void roundTrip();
    void tolerated();
    void rejected_data();
    void rejected();
};

void NotchProfileTest::catalogue()
{
    // The stored texts are a file format: they must never change.
    const QStringList stored{
        u"none"_s,        u"media"_s,       u"clock"_s,         u"volume"_s,
        u"network"_s,     u"weather"_s,     u"dayProgress"_s,   u"quote"_s,
        u"appLauncher"_s, u"quickToggle"_s, u"calendar"_s,      u"todo"_s,
        u"pomodoro"_s,    u"bluetooth"_s,   u"systemMonitor"_s, u"dropActions"_s};
    QStringList texts;
    for (const NotchWidgetType type : allWidgetTypes()) {
        texts << rawValue(type);
        QCOMPARE(widgetTypeFromRawValue(rawValue(type)), std::optional(type));
    }
    QCOMPARE(texts, stored);
    for (const QString &text : {u""_s, u"Clock"_s, u"clock "_s, u"cloc"_s, u"clock\0"_s}) {
        QVERIFY2(!widgetTypeFromRawValue(text), qPrintable(text));
    }
    QCOMPARE(displayName(NotchWidgetType::none), u"Empty"_s);
    QCOMPARE(displayName(NotchWidgetType::quickToggle), u"Quick Toggles"_s);
}

void NotchProfileTest::roundTrip()
{
    QCOMPARE(encodeProfiles({recordedProfile()}), listOf(record()));
    std::vector<NotchProfile> profiles = NotchProfile::builtIn();
    for (const QString &name : {QString(), u"\"quoted\" \\ \n\t/"_s, u"\U0001F310 \u202E a"_s,
                                QString(QChar(0)), QString(100'000, u'x')}) {
        profiles.push_back(recordedProfile());
        profiles.back().name = name;
    }
    QVERIFY(decodeProfiles(encodeProfiles(profiles)) == profiles);
    // Half of a pair of surrogates cannot be written, and spoils nothing.
    profiles.back().name = QString(QChar(0xD800));
    QCOMPARE(decodeProfiles(encodeProfiles(profiles)).value().size(), profiles.size());
}

void NotchProfileTest::tolerated()
{
    const auto center = [](const char *value) { return listOf(record({{R"("weather")", value}})); };
    NotchProfile expected = recordedProfile();
    for (const QByteArray &data :
         {listOf(record({{"89AB-CDEF", "89ab-cdef"}})),
          listOf(record({{R"("name")", R"("version":[1,{"a":null}],"name")"}})),
          center(R"("media","centerWidget":"weather")"), " [ \r\n" + record() + "\t\n ] \n"}) {
        QVERIFY2(decodeProfiles(data) == std::vector{expected}, data.constData());
    }
    // A widget of a later version.
    expected.widgets[2] = NotchWidgetType::none;
    for (const char *value : {R"("Weather")", R"("teleport")", R"("")"}) {
        QVERIFY2(decodeProfiles(center(value)) == std::vector{expected}, value);
    }
    QVERIFY(decodeProfiles("[]").value().empty());
    const auto many = listOf(QByteArray(record() + ',').repeated(25'000) + record()); // 5 MB
    QCOMPARE(decodeProfiles(many).value().size(), std::size_t{25'001});
}

void NotchProfileTest::rejected_data()
{
    QTest::addColumn<QByteArray>("data");

    for (const QByteArray key : {"id", "name", "farLeftWidget", "farRightWidget"}) {
        // The value goes in under the key, the old one under another.
        for (const QByteArray &value : {QByteArray(), '"' + key + "\":7,", '"' + key + "\":{},"}) {
            const QByteArray change = value + R"("other")";
            const QByteArray bad =
                record({{QByteArray('"' + key + '"').constData(), change.constData()}});
            QTest::addRow("one record of two with %s", change.constData())
                << listOf(record() + ',' + bad);
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
    QTest::newRow("array of numbers") << QByteArray("[1,2]");
    QTest::newRow("cut short") << good.chopped(1);
    QTest::newRow("UTF-8 cut short") << listOf(record({{"W\xC3\xB6rk", "W\xC3"}}));
    QTest::newRow("deep arrays") << QByteArray(100'000, '[') + QByteArray(100'000, ']');
    QTest::newRow("5 MB of noise") << QByteArray(5'000'000, '\xFF');
}

void NotchProfileTest::rejected()
{
    QFETCH(const QByteArray, data);
    QVERIFY(!decodeProfiles(data));
}

QTEST_GUILESS_MAIN(NotchProfileTest)
#include "NotchProfileTest.moc"
