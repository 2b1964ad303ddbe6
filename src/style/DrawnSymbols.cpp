#include "style/DrawnSymbols.h"

#include <QPainterPathStroker>

#include <array>

namespace velmora
{

namespace
{

QPainterPath stroked(const QPainterPath &line, double width = 2)
{
    QPainterPathStroker stroker;
    stroker.setWidth(width);
    stroker.setCapStyle(Qt::RoundCap);
    stroker.setJoinStyle(Qt::RoundJoin);
    return stroker.createStroke(line).simplified();
}

QPainterPath segment(QPointF from, QPointF to, double width = 2)
{
    QPainterPath line(from);
    line.lineTo(to);
    return stroked(line, width);
}

QPainterPath box(const QRectF &rect, double radius)
{
    QPainterPath path;
    path.addRoundedRect(rect, radius, radius);
    return path;
}

QPainterPath circle(QPointF centre, double radius)
{
    QPainterPath path;
    path.addEllipse(centre, radius, radius);
    return path;
}

/// A piece of a circle's outline; angles in degrees, counter-clockwise from three o'clock.
QPainterPath arc(QPointF centre, double radius, double start, double sweep, double width = 2)
{
    const QRectF rect(centre.x() - radius, centre.y() - radius, 2 * radius, 2 * radius);
    QPainterPath line;
    line.arcMoveTo(rect, start);
    line.arcTo(rect, start, sweep);
    return stroked(line, width);
}

QPainterPath polygon(std::initializer_list<QPointF> corners)
{
    QPainterPath path(*corners.begin());
    for (const QPointF &corner : corners) {
        path.lineTo(corner);
    }
    path.closeSubpath();
    return path;
}

QPainterPath rectangleTopThirdInsetFilled()
{
    const QPainterPath outline = box({2, 4, 20, 16}, 3) - box({3.6, 5.6, 16.8, 12.8}, 1.6);
    return outline + box({5.2, 7.2, 13.6, 4}, 0.8);
}

QPainterPath speaker()
{
    return polygon({{2, 9}, {6, 9}, {11, 4.5}, {11, 19.5}, {6, 15}, {2, 15}});
}

/// With as many waves before it.
QPainterPath speakerWaves(int count)
{
    QPainterPath path = speaker();
    for (int wave = 1; wave <= count; ++wave) {
        path += arc({11, 12}, 1 + 3.6 * wave, -45, 90, 1.8);
    }
    return path;
}

QPainterPath playSlash()
{
    // At 9 points a stroke is to be a pixel wide, and the gap beside it to be seen.
    const QPainterPath gap = segment({2.4, 2.3}, {22.4, 22.3}, 4.8);
    return (polygon({{6, 3}, {21, 12}, {6, 21}}) - gap) + segment({3, 4}, {20, 21}, 2.4);
}

QPainterPath switch2()
{
    const QPainterPath upper = box({4, 3, 16, 8}, 4) - circle({16, 7}, 2.6);
    const QPainterPath lower = box({4, 13, 16, 8}, 4) - box({5.6, 14.6, 12.8, 4.8}, 2.4);
    return upper + lower + circle({8, 17}, 2.6);
}

QPainterPath sunHorizon()
{
    QPainterPath half = circle({12, 16}, 5);
    half = half - polygon({{0, 16}, {24, 16}, {24, 24}, {0, 24}});
    return half + segment({2.5, 19.5}, {21.5, 19.5}, 1.8) + segment({12, 5}, {12, 7.6}, 1.8) +
           segment({4.4, 8.4}, {6.2, 10.2}, 1.8) + segment({19.6, 8.4}, {17.8, 10.2}, 1.8) +
           segment({1.8, 15}, {3.8, 15}, 1.8) + segment({20.2, 15}, {22.2, 15}, 1.8);
}

QPainterPath quoteMark(double x)
{
    return circle({x, 9.6}, 1.7) + arc({x - 2.3, 9.8}, 4, 0, -62, 1.5);
}

QPainterPath quoteBubble()
{
    const QPainterPath body = box({2, 3, 20, 15}, 3.4) + polygon({{6, 17}, {12, 17}, {6, 22}});
    return (body - box({3.7, 4.7, 16.6, 11.6}, 1.9)) + quoteMark(9) + quoteMark(15);
}

QPainterPath wave3Right()
{
    const QPointF centre(3, 12);
    return arc(centre, 4.5, -42, 84, 2.2) + arc(centre, 10.5, -42, 84, 2.2) +
           arc(centre, 16.5, -42, 84, 2.2);
}

/// An open tray, seen from the front: a body with an inlet at the top.
QPainterPath tray()
{
    QPainterPath inlet(QPointF(8, 13));
    inlet.cubicTo({8.4, 17}, {15.6, 17}, {16, 13});
    inlet.closeSubpath();
    const QPainterPath lower =
        box({2, 13, 20, 8}, 2.4) + polygon({{2, 13}, {22, 13}, {22, 16}, {2, 16}});
    QPainterPath frame(QPointF(2.9, 13.4));
    frame.lineTo(6, 5.9);
    frame.lineTo(18, 5.9);
    frame.lineTo(21.1, 13.4);
    return (lower - inlet) + stroked(frame, 1.8);
}

QPainterPath trayAndArrowDown()
{
    const QPainterPath room = box({7.6, 0, 8.8, 12.4}, 1);
    const QPainterPath arrow =
        segment({12, 2.4}, {12, 9}, 1.9) + polygon({{8.4, 7.6}, {15.6, 7.6}, {12, 12}});
    return (tray() - room) + arrow;
}

QPainterPath calendarBadgeExclamationmark()
{
    const QPainterPath page = box({2, 4, 17, 16}, 2.6) - box({3.7, 9, 13.6, 9.3}, 1.2);
    const QPainterPath rings = segment({6.6, 2.4}, {6.6, 5}) + segment({14.4, 2.4}, {14.4, 5});
    const QPainterPath mark = segment({18, 13.6}, {18, 17}, 1.5) + circle({18, 19.4}, 0.85);
    return ((page + rings) - circle({18, 16.5}, 6.2)) + (circle({18, 16.5}, 5.2) - mark);
}

QPainterPath trash()
{
    const QPainterPath lid = segment({4, 6}, {20, 6}, 1.8) + segment({9.5, 3.2}, {14.5, 3.2}, 1.8);
    QPainterPath bin(QPointF(6.2, 7));
    bin.lineTo(7, 20.6);
    bin.lineTo(17, 20.6);
    bin.lineTo(17.8, 7);
    return lid + stroked(bin, 1.8) + segment({10.2, 10}, {10.5, 17}, 1.5) +
           segment({13.8, 10}, {13.5, 17}, 1.5);
}

QPainterPath earbud(double side)
{
    const double x = 12 + side * 5.4;
    return circle({x, 7.4}, 4) + segment({x + side * 1.4, 9}, {x + side * 1.4, 20}, 3);
}

QPainterPath checklist()
{
    QPainterPath tick(QPointF(3, 7));
    tick.lineTo(4.8, 8.8);
    tick.lineTo(8, 5.2);
    return stroked(tick, 1.8) + stroked(tick.translated(0, 9.6), 1.8) +
           segment({11.5, 7.2}, {21, 7.2}, 1.9) + segment({11.5, 16.8}, {21, 16.8}, 1.9);
}

QPainterPath checkmark()
{
    QPainterPath line(QPointF(4.5, 13));
    line.lineTo(9.5, 18);
    line.lineTo(19.5, 6);
    return stroked(line, 2.6);
}

QPainterPath chevronRight()
{
    QPainterPath line(QPointF(9, 5));
    line.lineTo(16, 12);
    line.lineTo(9, 19);
    return stroked(line, 2.4);
}

QPainterPath arrowCounterclockwise()
{
    return arc({12, 13}, 8, 84, -300, 2.3) + polygon({{13.2, 0.6}, {13.2, 9.4}, {7.4, 5}});
}

// The font has the box filled only.
QPainterPath archiveBox()
{
    const QPainterPath lid = box({2.4, 3, 19.2, 5.8}, 1.4) - box({4.1, 4.7, 15.8, 2.4}, 0.4);
    const QPainterPath body = box({3.8, 7.1, 16.4, 14}, 1.8) - box({5.5, 8.8, 13, 10.6}, 0.6);
    return lid + body + segment({9.6, 12.4}, {14.4, 12.4}, 1.7);
}

// And these two sheets in outline only.
QPainterPath docOnDocFill()
{
    const QPainterPath room = box({6.8, 4.8, 16, 19}, 3);
    return (box({2.6, 1.6, 13, 16.4}, 2) - room) + box({8.2, 6.2, 13, 16.4}, 2);
}

constexpr std::array<DrawnSymbol, 24> symbols{{
    {"trash", trash},
    {"archivebox", archiveBox},
    {"doc.on.doc.fill", docOnDocFill},
    {"arrow.counterclockwise", arrowCounterclockwise},
    {"checkmark", checkmark},
    {"chevron.right", chevronRight},
    {"rectangle.topthird.inset.filled", rectangleTopThirdInsetFilled},
    {"rectangle.3.group",
     [] {
         return box({2, 4, 9, 16}, 2) + box({13, 4, 9, 7}, 2) + box({13, 13, 9, 7}, 2);
     }},
    {"speaker.fill", speaker},
    {"speaker.wave.1.fill", [] { return speakerWaves(1); }},
    {"speaker.wave.2.fill", [] { return speakerWaves(2); }},
    {"speaker.wave.2", [] { return speakerWaves(2); }},
    {"speaker.wave.3.fill", [] { return speakerWaves(3); }},
    {"play.slash", playSlash},
    {"switch.2", switch2},
    {"sun.horizon", sunHorizon},
    {"quote.bubble", quoteBubble},
    {"wave.3.right", wave3Right},
    {"trackpad.fill",
     [] {
         return box({2, 4, 20, 16}, 3) - box({3.6, 14, 16.8, 1.4}, 0.7) -
                box({11.3, 14.7, 1.4, 4.4}, 0.7);
     }},
    {"tray.fill", tray},
    {"tray.and.arrow.down.fill", trayAndArrowDown},
    {"calendar.badge.exclamationmark", calendarBadgeExclamationmark},
    {"airpodspro", [] { return earbud(-1) + earbud(1); }},
    {"checklist", checklist},
}};

} // namespace

std::span<const DrawnSymbol> drawnSymbols()
{
    return symbols;
}

} // namespace velmora
