#pragma once

#include <cstddef>
#include <libical/ical.h>
#include <vector>

namespace velmora
{

/// The starts of a recurring event or task from `from` to `to`, ascending, without excepted ones.
/// `first` is its start, in whose zone they are. At most `most`: there are rules without end.
[[nodiscard]] std::vector<icaltimetype> occurrences(icalcomponent *component,
                                                    const icaltimetype &first,
                                                    const icaltimetype &from,
                                                    const icaltimetype &to, std::size_t most);

/// A time with the zone that its property names.
[[nodiscard]] icaltimetype zonedTime(icalproperty *property, icaltimetype time);

template<typename Visit>
void forEachProperty(icalcomponent *component, icalproperty_kind kind, Visit visit)
{
    for (icalproperty *property = icalcomponent_get_first_property(component, kind);
         property != nullptr; property = icalcomponent_get_next_property(component, kind)) {
        visit(property);
    }
}

} // namespace velmora
