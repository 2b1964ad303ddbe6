#pragma once

#include "platform/linux/wayland/WireMessage.h"

#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace velmora
{

/// Thins out the pointer's motion in the events of a Wayland compositor. Motions that follow each
/// other with nothing in between say no more than the last of them does. One pointer may stand
/// behind several objects (Qt has three), which are told in turn. Over a surface that wants no
/// motion it is held back until the pointer does something else; not while a button is held,
/// though.
class MotionFilter
{
public:
    struct Passed {
        std::vector<std::byte> bytes;
        bool hasMotion;
    };

    /// To be shown what the client asks for, in order: tells which objects are pointers.
    void observe(Bytes requests);

    /// The surfaces over which motion is not wanted.
    void setQuietSurfaces(std::unordered_set<std::uint32_t> surfaces)
    {
        m_quietSurfaces = std::move(surfaces);
    }

    /// What is left of the events. All else stays as it came, in the same order, but whole messages
    /// only: the begin of one waits for its rest. After anything that cannot be understood,
    /// everything stays.
    [[nodiscard]] Passed filter(Bytes events);

private:
    /// Where a message ends in the chunk; it begins where the one before ends.
    struct Slot {
        std::size_t end;
        bool isLeftOut;
    };
    struct Insertion {
        std::size_t slot; ///< comes right before this one
        std::vector<std::byte> bytes;
    };
    using Slots = std::vector<std::size_t>; ///< places in `m_slots`

    /// What the events since a pointer's last frame are.
    enum class Frame { Closed, Motion, Mixed };
    struct Pointer {
        Frame frame = Frame::Closed;
        std::uint32_t surface = 0; ///< below the pointer
        int pressed = 0;           ///< buttons
        Slots open;                ///< motions whose frame has yet to come
        Slots closed;              ///< the last frame of nothing but motion, if it may be left out
        std::vector<std::byte> held; ///< such a frame, left out because no motion is wanted
    };

    void observe(const WireMessage &request);
    void takeEvent(Pointer &pointer, const WireMessage &message);
    void takeMotion(Pointer &pointer);
    void takeFrame(Pointer &pointer);
    void takeOther(Pointer &pointer, const WireMessage &message);
    void leaveOut(const Slots &slots);
    [[nodiscard]] Bytes bytesOf(std::size_t slot) const;
    [[nodiscard]] std::vector<std::byte> edited() const;
    void breakRun();
    void forget(std::uint32_t object);

    std::unordered_set<std::uint32_t> m_quietSurfaces;
    std::vector<Slot> m_slots; ///< of the chunk at hand
    std::vector<Insertion> m_insertions;
    WireReader m_requests;
    WireReader m_events;
    std::unordered_set<std::uint32_t> m_registries;
    std::unordered_set<std::uint32_t> m_seats;
    std::unordered_map<std::uint32_t, Pointer> m_pointers;
};

} // namespace velmora
