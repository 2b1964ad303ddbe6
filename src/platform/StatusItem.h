#pragma once

#include <QString>

#include <functional>
#include <vector>

namespace velmora
{

/// One line of the status menu.
struct MenuItem {
    enum class Kind { Action, Separator, Submenu };
    enum class Mark { None, Off, On }; ///< None: the item has no check mark at all

    Kind kind = Kind::Action;
    QString title;
    int tag = 0;
    Mark mark = Mark::None;
    QString keyEquivalent; ///< one character, pressed with Control; empty for none
    std::function<void()> action;
    std::vector<MenuItem> submenu;
    bool isChoice = false; ///< marked as one of several, of which one is on
};

using Menu = std::vector<MenuItem>;

/// A place where the status menu is on offer.
class StatusItem
{
public:
    StatusItem() = default;
    StatusItem(const StatusItem &) = delete;
    StatusItem &operator=(const StatusItem &) = delete;
    virtual ~StatusItem() = default;

    /// Replaces the whole menu. Actions run on the main loop, never inside this call.
    virtual void setMenu(const Menu &menu) = 0;
};

} // namespace velmora
