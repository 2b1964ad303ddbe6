#include "platform/linux/calendar/TaskEdits.h"

#include "platform/linux/calendar/CalendarItem.h"
#include "platform/linux/calendar/ContentLines.h"

#include <algorithm>
#include <utility>

namespace velmora
{

namespace
{

struct PropertyFree {
    void operator()(icalproperty *property) const { icalproperty_free(property); }
};
using Property = std::unique_ptr<icalproperty, PropertyFree>;

icaltimetype utcTime(time_t moment)
{
    return icaltime_from_timet_with_zone(moment, 0, icaltimezone_get_utc_timezone());
}

/// The property as a line or lines of a file.
QByteArray written(const Property &property)
{
    const std::unique_ptr<char, decltype(&icalmemory_free_buffer)> text(
        icalproperty_as_ical_string_r(property.get()), &icalmemory_free_buffer);
    return {text.get()};
}

/// A task, as a part of a text.
struct Part {
    qsizetype begin = 0;
    qsizetype end = 0;
    Component component; ///< may be null
};

/// The tasks of a text. `isOtherLeft` tells whether it holds anything else but zones.
std::vector<Part> tasksIn(const QByteArray &text, bool *isOtherLeft = nullptr)
{
    std::vector<Part> parts;
    qsizetype begin = -1;
    forEachLine(text, [&](const ContentLine &line) {
        const bool isBegin = line.name == "BEGIN";
        if (isBegin && line.value() == "VTODO") {
            begin = line.begin;
        } else if (begin >= 0 && line.name == "END" && line.value() == "VTODO") {
            const QByteArray part = text.mid(begin, line.end - begin);
            parts.push_back({begin, line.end, parseCalendar(part)});
            begin = -1;
        } else if (isBegin && isOtherLeft != nullptr &&
                   (line.value() == "VEVENT" || line.value() == "VJOURNAL")) {
            *isOtherLeft = true;
        }
    });
    return parts;
}

bool is(const Part &part, const QByteArray &uid)
{
    return part.component && uid == icalcomponent_get_uid(part.component.get());
}

QByteArray valueOf(const Part &part, icalproperty_kind kind)
{
    icalproperty *const property = icalcomponent_get_first_property(part.component.get(), kind);
    return property != nullptr ? QByteArray(icalproperty_get_value_as_string(property))
                               : QByteArray();
}

/// The text of a task that is being changed. All lines but those of changed properties stay.
class TaskText
{
public:
    TaskText(QByteArray text, icalcomponent *component)
        : m_text(std::move(text))
        , m_component(component)
    {
    }

    /// Puts the property in the place of all those of its kind.
    void replace(const Property &property)
    {
        const QByteArray name = icalproperty_get_property_name(property.get());
        QByteArray changed;
        bool isPlaced = false;
        int depth = 0;
        forEachLine(m_text, [&](const ContentLine &line) {
            depth += line.name == "BEGIN" ? 1 : 0;
            if (depth != 1 || line.name != name) {
                changed.append(line.raw);
            } else if (!std::exchange(isPlaced, true)) {
                changed.append(written(property));
            }
            depth -= line.name == "END" ? 1 : 0;
        });
        m_text = changed;
        if (!isPlaced) {
            add(property);
        }
    }

    void add(const Property &property)
    {
        m_text.insert(m_text.indexOf('\n') + 1, written(property)); // behind its BEGIN
    }

    /// Moves a time by seconds of its clock, if there is one.
    void move(icalproperty_kind kind, qint64 seconds)
    {
        icalproperty *const property = icalcomponent_get_first_property(m_component, kind);
        if (property == nullptr) {
            return;
        }
        icaltimetype time = icalvalue_get_datetime(icalproperty_get_value(property));
        constexpr qint64 day = 86400;
        icaltime_adjust(&time, static_cast<int>(seconds / day), 0, 0,
                        static_cast<int>(seconds % day));
        const Property changed(icalproperty_new_clone(property));
        icalproperty_set_value(changed.get(), time.is_date != 0 ? icalvalue_new_date(time)
                                                                : icalvalue_new_datetime(time));
        replace(changed);
    }

    [[nodiscard]] const QByteArray &text() const { return m_text; }

private:
    QByteArray m_text;
    icalcomponent *m_component;
};

/// Has the task begin with its next occurrence, as other programs do.
void moveOn(TaskText &text, icalcomponent *component, const OpenTask &task)
{
    icalproperty *const start = icalcomponent_get_first_property(component, ICAL_DTSTART_PROPERTY);
    icalproperty *const due = icalcomponent_get_first_property(component, ICAL_DUE_PROPERTY);
    icalproperty *const rule = icalcomponent_get_first_property(component, ICAL_RRULE_PROPERTY);
    if (rule == nullptr || icalcomponent_count_properties(component, ICAL_RDATE_PROPERTY) > 0) {
        // Moving it would change the others: this occurrence is taken out.
        icaltimetype time = task.start;
        time.zone = nullptr;
        const Property taken(icalproperty_new_exdate(time));
        icalparameter *const zone =
            icalproperty_get_first_parameter(start != nullptr ? start : due, ICAL_TZID_PARAMETER);
        if (zone != nullptr) {
            icalproperty_add_parameter(taken.get(), icalparameter_new_clone(zone));
        }
        text.add(taken);
        return;
    }
    text.move(ICAL_DTSTART_PROPERTY, *task.following);
    text.move(ICAL_DUE_PROPERTY, *task.following);
    icalrecurrencetype left = icalproperty_get_rrule(rule);
    if (left.count > 0) {
        left.count = std::max(left.count - task.passed, 1);
        text.replace(Property(icalproperty_new_rrule(left)));
    }
}

} // namespace

QByteArray newTask(const QByteArray &uid, const QString &title, time_t now)
{
    return "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Velmora//Velmora//EN\r\nBEGIN:VTODO\r\n"
           "UID:" +
           uid + "\r\n" + written(Property(icalproperty_new_dtstamp(utcTime(now)))) +
           written(Property(icalproperty_new_created(utcTime(now)))) +
           written(Property(icalproperty_new_lastmodified(utcTime(now)))) +
           written(Property(icalproperty_new_summary(title.toUtf8().constData()))) +
           "STATUS:NEEDS-ACTION\r\nEND:VTODO\r\nEND:VCALENDAR\r\n";
}

std::optional<QByteArray> withCompleted(const QByteArray &text, const QByteArray &uid, time_t now)
{
    const auto tasks = CalendarItem(text).openTasks();
    const auto task = std::find_if(tasks.begin(), tasks.end(), [&uid](const OpenTask &one) {
        return one.reminder.id.toUtf8() == uid;
    });
    if (task == tasks.end()) {
        return std::nullopt;
    }
    const std::vector<Part> parts = tasksIn(text);
    const auto part = std::find_if(parts.begin(), parts.end(), [&](const Part &one) {
        return is(one, uid) && valueOf(one, ICAL_RECURRENCEID_PROPERTY) == task->overridden;
    });
    if (part == parts.end()) {
        return std::nullopt;
    }
    TaskText changed(text.mid(part->begin, part->end - part->begin), part->component.get());
    if (task->following) {
        moveOn(changed, part->component.get(), *task);
    } else {
        changed.replace(Property(icalproperty_new_status(ICAL_STATUS_COMPLETED)));
        changed.replace(Property(icalproperty_new_completed(utcTime(now))));
        changed.replace(Property(icalproperty_new_percentcomplete(100)));
    }
    changed.replace(Property(icalproperty_new_lastmodified(utcTime(now))));
    changed.replace(Property(icalproperty_new_dtstamp(utcTime(now))));
    const QByteArray all = text.left(part->begin) + changed.text() + text.mid(part->end);
    return text.contains("\r\n") ? all : QByteArray(all).replace("\r\n", "\n");
}

std::optional<QByteArray> withoutTask(const QByteArray &text, const QByteArray &uid)
{
    bool isOtherLeft = false;
    std::vector<Part> parts = tasksIn(text, &isOtherLeft);
    std::reverse(parts.begin(), parts.end()); // what is removed moves what follows it
    QByteArray left = text;
    for (const Part &part : parts) {
        if (is(part, uid)) {
            left.remove(part.begin, part.end - part.begin);
        } else {
            isOtherLeft = true;
        }
    }
    if (left == text) {
        return std::nullopt;
    }
    return isOtherLeft ? left : QByteArray();
}

} // namespace velmora
