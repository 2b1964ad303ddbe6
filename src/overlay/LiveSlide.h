#pragma once

#include "services/PomodoroService.h"
#include "style/Style.h"

#include <QColor>
#include <QDateTime>
#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

#include <variant>
#include <vector>

namespace velmora
{

class CalendarService;
class MediaRemoteService;

struct MediaSlide {
    QString title;
    QString artist;
    bool isPlaying = false;

    friend bool operator==(const MediaSlide &, const MediaSlide &) = default;
};

struct PomodoroSlide {
    QString time;
    PomodoroPhase phase = PomodoroPhase::work;
    QString phaseLabel;
    QColor color;

    friend bool operator==(const PomodoroSlide &, const PomodoroSlide &) = default;
};

struct CalendarSlide {
    QString title;
    QString info;

    friend bool operator==(const CalendarSlide &, const CalendarSlide &) = default;
};

/// One thing that the collapsed notch has to say.
using LiveSlide = std::variant<MediaSlide, PomodoroSlide, CalendarSlide>;

/// All of them, in the order in which they take turns.
[[nodiscard]] std::vector<LiveSlide> liveSlides(const MediaRemoteService &media,
                                                const PomodoroService &pomodoro,
                                                const CalendarService &calendar,
                                                const QDateTime &now);

/// How a slide is drawn: a symbol, and one or two texts, one above the other or side by side. Sizes
/// are points.
struct LiveSlideLook {
    Q_GADGET
    QML_VALUE_TYPE(liveSlideLook)
    Q_PROPERTY(QString symbol MEMBER symbol)
    Q_PROPERTY(QColor symbolColor MEMBER symbolColor)
    Q_PROPERTY(bool isStacked MEMBER isStacked)
    Q_PROPERTY(QString first MEMBER first)
    Q_PROPERTY(double firstSize MEMBER firstSize)
    Q_PROPERTY(bool isFirstFigure MEMBER isFirstFigure)
    Q_PROPERTY(QColor firstColor MEMBER firstColor)
    Q_PROPERTY(QString second MEMBER second)
    Q_PROPERTY(bool isSecondMedium MEMBER isSecondMedium)
    Q_PROPERTY(QColor secondColor MEMBER secondColor)

public:
    QString symbol;
    QColor symbolColor;
    bool isStacked = false;
    QString first;
    double firstSize = Style::text;
    bool isFirstFigure = false; ///< in digits of one width
    QColor firstColor = Qt::white;
    QString second; ///< empty: there is none
    bool isSecondMedium = false;
    QColor secondColor;

    friend bool operator==(const LiveSlideLook &, const LiveSlideLook &) = default;
};

[[nodiscard]] LiveSlideLook lookOf(const LiveSlide &slide);

} // namespace velmora
