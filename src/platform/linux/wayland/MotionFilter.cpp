#include "platform/linux/wayland/MotionFilter.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace velmora
{

namespace
{

// The core protocol's numbers, which can never change.
constexpr std::uint32_t displayObject = 1;

namespace request
{
constexpr std::uint16_t displayGetRegistry = 1;
constexpr std::uint16_t registryBind = 0;
constexpr std::uint16_t seatGetPointer = 0;
} // namespace request

namespace event
{
constexpr std::uint16_t displayDeleteId = 1;
constexpr std::uint16_t pointerEnter = 0;
constexpr std::uint16_t pointerLeave = 1;
constexpr std::uint16_t pointerMotion = 2;
constexpr std::uint16_t pointerButton = 3;
constexpr std::uint16_t pointerFrame = 5;
} // namespace event

struct Binding {
    std::string_view interface;
    std::uint32_t object;
};

/// The arguments are a name, a text with its size before it (which counts the zero at its end) and
/// padded to whole words, a version, and the new object.
Binding bindingOf(const WireMessage &request)
{
    constexpr std::size_t textBegin = 8;
    const std::size_t length = request.word(1);
    if (length == 0 || textBegin + length > request.arguments.size())
        return {{}, 0};
    const auto *text = reinterpret_cast<const char *>(request.arguments.data() + textBegin);
    const std::size_t version = 2 + (length + 3) / 4;
    return {{text, length - 1}, request.word(version + 1)};
}

void append(std::vector<std::byte> &bytes, Bytes more)
{
    bytes.insert(bytes.end(), more.begin(), more.end());
}

} // namespace

void MotionFilter::observe(Bytes requests)
{
    m_requests.add(requests);
    while (const auto request = m_requests.next())
        observe(*request);
    m_requests.drop();
}

void MotionFilter::observe(const WireMessage &request)
{
    if (request.object == displayObject && request.opcode == request::displayGetRegistry) {
        m_registries.insert(request.word(0));
    } else if (m_registries.contains(request.object) && request.opcode == request::registryBind) {
        if (const Binding binding = bindingOf(request); binding.interface == "wl_seat")
            m_seats.insert(binding.object);
    } else if (m_seats.contains(request.object) && request.opcode == request::seatGetPointer) {
        m_pointers.try_emplace(request.word(0));
    }
}

MotionFilter::Passed MotionFilter::filter(Bytes events)
{
    breakRun();
    m_slots.clear();
    m_insertions.clear();
    m_events.add(events);
    bool hasMotion = false;
    while (const auto message = m_events.next()) {
        m_slots.push_back({m_events.taken(), false});
        const auto pointer = m_pointers.find(message->object);
        if (pointer != m_pointers.end()) {
            hasMotion |= message->opcode == event::pointerMotion;
            takeEvent(pointer->second, *message);
            continue;
        }
        breakRun();
        if (message->object == displayObject && message->opcode == event::displayDeleteId)
            forget(message->word(0));
    }
    Passed passed{edited(), hasMotion};
    m_events.drop();
    return passed;
}

void MotionFilter::takeEvent(Pointer &pointer, const WireMessage &message)
{
    if (message.opcode == event::pointerMotion)
        takeMotion(pointer);
    else if (message.opcode == event::pointerFrame)
        takeFrame(pointer);
    else
        takeOther(pointer, message);
}

void MotionFilter::takeMotion(Pointer &pointer)
{
    if (pointer.frame == Frame::Closed)
        pointer.frame = Frame::Motion;
    if (pointer.frame == Frame::Motion)
        pointer.open.push_back(m_slots.size() - 1);
    else
        pointer.held.clear();
}

void MotionFilter::takeFrame(Pointer &pointer)
{
    if (std::exchange(pointer.frame, Frame::Closed) == Frame::Motion) {
        leaveOut(pointer.closed);
        pointer.open.push_back(m_slots.size() - 1);
        pointer.closed.swap(pointer.open);
        pointer.held.clear();
        if (m_quietSurfaces.contains(pointer.surface) && pointer.pressed == 0) {
            leaveOut(pointer.closed);
            for (const std::size_t slot : pointer.closed)
                append(pointer.held, bytesOf(slot));
        }
    }
    pointer.open.clear();
}

void MotionFilter::takeOther(Pointer &pointer, const WireMessage &message)
{
    breakRun();
    if (message.opcode == event::pointerEnter || message.opcode == event::pointerLeave) {
        // Both begin with a serial number and the surface.
        pointer.surface = message.opcode == event::pointerEnter ? message.word(1) : 0;
        pointer.held.clear();
        pointer.pressed = 0;
    } else if (message.opcode == event::pointerButton) {
        constexpr std::size_t state = 3; // its place among the arguments
        pointer.pressed = std::max(0, pointer.pressed + (message.word(state) != 0 ? 1 : -1));
    }
    // What happens now happens where the pointer is.
    if (!pointer.held.empty())
        m_insertions.push_back({m_slots.size() - 1, std::exchange(pointer.held, {})});
    pointer.frame = Frame::Mixed;
}

void MotionFilter::leaveOut(const Slots &slots)
{
    for (const std::size_t slot : slots)
        m_slots[slot].isLeftOut = true;
}

Bytes MotionFilter::bytesOf(std::size_t slot) const
{
    const std::size_t begin = slot == 0 ? 0 : m_slots[slot - 1].end;
    return m_events.bytes().subspan(begin, m_slots[slot].end - begin);
}

std::vector<std::byte> MotionFilter::edited() const
{
    std::vector<std::byte> bytes;
    auto insertion = m_insertions.begin();
    for (std::size_t slot = 0; slot < m_slots.size(); ++slot) {
        if (insertion != m_insertions.end() && insertion->slot == slot)
            append(bytes, (insertion++)->bytes);
        if (!m_slots[slot].isLeftOut)
            append(bytes, bytesOf(slot));
    }
    // What could not be understood.
    const std::size_t end = m_slots.empty() ? 0 : m_slots.back().end;
    append(bytes, m_events.bytes().subspan(end, m_events.taken() - end));
    return bytes;
}

/// What has come so far is passed on, whatever follows. A frame that is open now is so as a whole.
void MotionFilter::breakRun()
{
    for (auto &[object, pointer] : m_pointers) {
        if (pointer.frame == Frame::Motion) {
            pointer.frame = Frame::Mixed;
            pointer.held.clear();
        }
        pointer.open.clear();
        pointer.closed.clear();
    }
}

/// From now on the number may come to stand for something else.
void MotionFilter::forget(std::uint32_t object)
{
    m_registries.erase(object);
    m_seats.erase(object);
    m_pointers.erase(object);
}

} // namespace velmora
