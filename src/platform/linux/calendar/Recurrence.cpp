#include "platform/linux/calendar/Recurrence.h"

#include <algorithm>
#include <memory>

namespace velmora
{

namespace
{

/// What libical does for one occurrence takes some microseconds.
constexpr int mostSteps = 200'000;

struct IteratorFree {
    void operator()(icalrecur_iterator *iterator) const { icalrecur_iterator_free(iterator); }
};
using RuleIterator = std::unique_ptr<icalrecur_iterator, IteratorFree>;

/// The last time at which the rule may have an occurrence, but not after `latest`.
icaltimetype lastOf(const icalrecurrencetype &rule, const icaltimetype &first,
                    const icaltimetype &latest)
{
    icaltimetype until = rule.until;
    if (until.is_date != 0 && first.is_date == 0) { // that whole day
        until.is_date = 0;
        until.hour = 23;
        until.minute = until.second = 59;
        until.zone = first.zone;
    }
    const bool isEndless = icaltime_is_null_time(rule.until) != 0;
    return isEndless || icaltime_compare(until, latest) > 0 ? latest : until;
}

void addRule(icalrecurrencetype rule, const icaltimetype &first, icaltimetype from,
             const icaltimetype &to, std::size_t most, std::vector<icaltimetype> &found)
{
    if (rule.freq < ICAL_HOURLY_RECURRENCE) {
        found.push_back(first); // nobody means thousands of them each day
        return;
    }
    // libical takes either COUNT or an end, and without one it looks up to the year 20000.
    const int steps = rule.count > 0 ? std::min(rule.count, mostSteps) : mostSteps;
    const bool canSkip = rule.count == 0 && rule.freq >= ICAL_DAILY_RECURRENCE;
    rule.count = 0;
    rule.until = lastOf(rule, first, to);
    const RuleIterator iterator(icalrecur_iterator_new(rule, first));
    if (!iterator) {
        return;
    }
    if (canSkip) { // below days it would lose the minutes
        from.is_date = first.is_date;
        icalrecur_iterator_set_start(iterator.get(), from);
    }
    for (int step = 0; step < steps && found.size() < most; ++step) {
        const icaltimetype next = icalrecur_iterator_next(iterator.get());
        if (icaltime_is_null_time(next) != 0) {
            return;
        }
        if (icaltime_compare(next, from) >= 0) {
            found.push_back(next);
        }
    }
}

} // namespace

icaltimetype zonedTime(icalproperty *property, icaltimetype time)
{
    if (icaltime_is_utc(time) == 0) {
        time.zone = icalproperty_get_datetime_with_component(property, nullptr).zone;
    }
    return time;
}

std::vector<icaltimetype> occurrences(icalcomponent *component, const icaltimetype &first,
                                      const icaltimetype &from, const icaltimetype &to,
                                      std::size_t most)
{
    std::vector<icaltimetype> found;
    bool hasRule = false;
    forEachProperty(component, ICAL_RRULE_PROPERTY, [&](icalproperty *property) {
        hasRule = true;
        addRule(icalproperty_get_rrule(property), first, from, to, found.size() + most, found);
    });
    forEachProperty(component, ICAL_RDATE_PROPERTY, [&](icalproperty *property) {
        const icaldatetimeperiodtype date = icalproperty_get_rdate(property);
        const bool isPeriod = icaltime_is_null_time(date.time) != 0;
        found.push_back(zonedTime(property, isPeriod ? date.period.start : date.time));
    });
    if (!hasRule) {
        found.push_back(first);
    }
    std::erase_if(found, [&](icaltimetype &one) {
        icaltimetype start = first;
        return icaltime_compare(one, from) < 0 || icaltime_compare(one, to) >= 0 ||
               icalproperty_recurrence_is_excluded(component, &start, &one) != 0;
    });
    std::sort(found.begin(), found.end(),
              [](const auto &a, const auto &b) { return icaltime_compare(a, b) < 0; });
    found.erase(
        std::unique(found.begin(), found.end(),
                    [](const auto &a, const auto &b) { return icaltime_compare(a, b) == 0; }),
        found.end());
    found.resize(std::min(found.size(), most));
    return found;
}

} // namespace velmora
