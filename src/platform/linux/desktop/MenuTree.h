#pragma once

#include "platform/StatusItem.h"

#include <QStringList>
#include <QVariantMap>

#include <functional>
#include <map>
#include <vector>

namespace velmora
{

/// A menu as its remote viewers see it: numbered entries with properties, below entry 0, the root.
///
/// A number is never given twice in the life of a tree. A viewer that still shows an earlier menu
/// can therefore only name entries that are gone, never a different one of the present menu.
class MenuTree
{
public:
    static constexpr int rootId = 0;

    struct Entry {
        QVariantMap properties;
        std::vector<int> children;
        std::function<void()> action;
    };

    MenuTree();

    void replace(const Menu &menu);

    /// Null if there is no such entry, or no longer.
    [[nodiscard]] const Entry *find(int id) const;
    [[nodiscard]] const std::map<int, Entry> &entries() const { return m_entries; }

private:
    std::vector<int> add(const Menu &menu);

    std::map<int, Entry> m_entries;
    int m_lastId = rootId;
};

/// The properties that are named; all of them if none is.
[[nodiscard]] QVariantMap selectProperties(const QVariantMap &properties, const QStringList &names);

} // namespace velmora
