#include "style/SymbolPath.h"

#include "style/DrawnSymbols.h"

#include <QFont>
#include <QRawFont>

#include <algorithm>
#include <array>

namespace velmora
{

namespace
{

struct FontSymbol {
    const char *name;
    char16_t character;
};

constexpr double outlineBox = 24;
constexpr double fontBaseline = 21; // of that box; the ascent of the font is no whole number

// Characters of the Material Design Icons font.
constexpr std::array<FontSymbol, 57> fontSymbols{{
    {"airplayaudio", 0xF01F},
    {"archivebox.fill", 0xF03C},
    {"arrow.down", 0xF045},
    {"arrow.down.to.line", 0xF1DA},
    {"arrow.right.square.fill", 0xF252},
    {"arrow.up", 0xF05D},
    {"arrow.up.circle.fill", 0xF05F},
    {"arrow.up.forward.app.fill", 0xF3CC},
    {"arrow.uturn.left", 0xF54C},
    {"backward.fill", 0xF45F},
    {"battery.100", 0xF079},
    {"battery.25", 0xF07C},
    {"battery.50", 0xF07E},
    {"battery.75", 0xF081},
    {"bell", 0xF09A},
    {"calendar", 0xF0ED},
    {"checkmark.circle", 0xF134},
    {"checkmark.circle.fill", 0xF5E0},
    {"circle", 0xF130},
    {"clock", 0xF150},
    {"cloud", 0xF590},
    {"cloud.bolt.rain.fill", 0xF593},
    {"cloud.drizzle.fill", 0xF597},
    {"cloud.fill", 0xF590},
    {"cloud.fog.fill", 0xF591},
    {"cloud.rain.fill", 0xF596},
    {"cloud.snow.fill", 0xF598},
    {"cloud.sun.fill", 0xF595},
    {"computermouse.fill", 0xF37D},
    {"cup.and.saucer.fill", 0xF176},
    {"eject.fill", 0xF1EA},
    {"forward.end.fill", 0xF4AD},
    {"forward.fill", 0xF211},
    {"gamecontroller.fill", 0xF297},
    {"gauge.medium", 0xF4C5},
    {"gearshape", 0xF493},
    {"headphones", 0xF2CB},
    {"info.circle", 0xF2FD},
    {"keyboard.fill", 0xF30C},
    {"lock.shield", 0xF483},
    {"minus", 0xF374},
    {"moon.fill", 0xF594},
    {"music.note", 0xF387},
    {"network", 0xF59F},
    {"pause.fill", 0xF3E4},
    {"pencil", 0xF3EB},
    {"person.2.fill", 0xF00E},
    {"photo.fill", 0xF2E9},
    {"play.fill", 0xF40A},
    {"plus", 0xF415},
    {"plus.circle", 0xF419},
    {"speaker.slash.fill", 0xF581},
    {"square.grid.2x2", 0xF570},
    {"sun.max.fill", 0xF599},
    {"timer", 0xF51B},
    {"trash.fill", 0xF1C0},
    {"xmark", 0xF156},
}};

QPainterPath fontPath(char16_t character)
{
    // The font stays loaded: symbols are drawn again and again, at many sizes.
    static const QRawFont font = [] {
        QFont named(QStringLiteral("Material Design Icons"));
        named.setPixelSize(static_cast<int>(outlineBox));
        named.setHintingPreference(QFont::PreferNoHinting);
        return QRawFont::fromFont(named);
    }();
    const QList<quint32> glyphs = font.glyphIndexesForString(QString(QChar(character)));
    if (glyphs.isEmpty() || glyphs.front() == 0) {
        return {};
    }
    return font.pathForGlyph(glyphs.front()).translated(0, fontBaseline);
}

} // namespace

QPainterPath symbolPath(const QString &name)
{
    const auto isNamed = [&name](const auto &symbol) { return name == QLatin1String(symbol.name); };
    const auto drawn = drawnSymbols();
    if (const auto found = std::find_if(drawn.begin(), drawn.end(), isNamed);
        found != drawn.end()) {
        return found->path();
    }
    const auto *const found = std::find_if(fontSymbols.begin(), fontSymbols.end(), isNamed);
    return found == fontSymbols.end() ? QPainterPath() : fontPath(found->character);
}

QStringList symbolNames()
{
    QStringList names;
    const auto add = [&names](const auto &symbol) { names << QString::fromLatin1(symbol.name); };
    std::for_each(drawnSymbols().begin(), drawnSymbols().end(), add);
    std::for_each(fontSymbols.begin(), fontSymbols.end(), add);
    return names;
}

} // namespace velmora
