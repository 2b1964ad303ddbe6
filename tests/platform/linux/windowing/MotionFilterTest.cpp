#include "platform/linux/wayland/MotionFilter.h"

#include <QTest>

#include <cstring>

using namespace velmora;

namespace
{

using Buffer = std::vector<std::byte>;
using Words = std::vector<std::uint32_t>;

constexpr std::uint32_t registry = 2;
constexpr std::uint32_t seat = 3;
constexpr std::uint32_t pointer = 4;
constexpr std::uint32_t surface = 9;

Buffer message(std::uint32_t object, std::uint16_t opcode, const Words &arguments)
{
    Words words{object, std::uint32_t((2 + arguments.size()) * 4) << 16 | opcode};
    words.insert(words.end(), arguments.begin(), arguments.end());
    Buffer bytes(words.size() * 4);
    std::memcpy(bytes.data(), words.data(), bytes.size());
    return bytes;
}

template<typename... More>
Buffer joined(Buffer first, const More &...more)
{
    (first.insert(first.end(), more.begin(), more.end()), ...);
    return first;
}

Buffer bind(const char *interface, std::uint32_t object)
{
    const std::size_t length = std::strlen(interface) + 1;
    Words arguments(2 + (length + 3) / 4 + 2);
    arguments[0] = 17;
    arguments[1] = std::uint32_t(length);
    std::memcpy(arguments.data() + 2, interface, length);
    *(arguments.end() - 2) = 7; // the version
    arguments.back() = object;
    return message(registry, 0, arguments);
}

Buffer motion(std::uint32_t x, std::uint32_t object = pointer)
{
    return message(object, 2, {1000, x, 0});
}

Buffer frame(std::uint32_t object = pointer)
{
    return message(object, 5, {});
}

Buffer move(std::uint32_t x, std::uint32_t object = pointer)
{
    return joined(motion(x, object), frame(object));
}

const Buffer button = joined(message(pointer, 3, {1, 1000, 272, 1}), frame());
const Buffer otherEvent = message(surface, 2, {1000, 1, 0});

Buffer introduction()
{
    return joined(message(1, 1, {registry}), bind("wl_compositor", surface), bind("wl_seat", seat),
                  message(seat, 0, {pointer}));
}

/// A filter that knows of the pointer.
MotionFilter informed()
{
    MotionFilter filter;
    filter.observe(introduction());
    return filter;
}

Buffer deleted(std::uint32_t object)
{
    return message(1, 1, {object});
}

} // namespace

class MotionFilterTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keepsTheLastOfARun();
    void keepsAllElse();
    void knowsThePointers();
    void holdsBackWhatNobodyWants();
    void chunksMayEndAnywhere();
    void passesNonsenseOn();
};

void MotionFilterTest::keepsTheLastOfARun()
{
    MotionFilter filter = informed();
    const auto passed = filter.filter(joined(otherEvent, move(1), move(2), move(3), otherEvent));
    QCOMPARE(passed.bytes, joined(otherEvent, move(3), otherEvent));
    QVERIFY(passed.hasMotion);
    // A run does not go on over what comes in between, nor from one chunk to the next.
    QCOMPARE(filter.filter(joined(move(4), move(5), button, move(6), move(7))).bytes,
             joined(move(5), button, move(7)));
    QCOMPARE(filter.filter(move(8)).bytes, move(8));
}

void MotionFilterTest::keepsAllElse()
{
    MotionFilter filter = informed();
    // A frame of several events, an open one, one pointer among another's, and no motion at all.
    for (const Buffer &bytes :
         {joined(move(1), motion(2), message(pointer, 4, {1000, 0, 5}), frame(), move(3)),
          joined(motion(1), motion(2), frame()), joined(frame(), frame()),
          joined(message(pointer, 3, {1, 1000, 272, 1}), motion(1), frame(), move(2)),
          joined(move(1), otherEvent, move(2)), joined(button, button)}) {
        QCOMPARE(filter.filter(bytes).bytes, bytes);
    }
    QVERIFY(!filter.filter(joined(button, otherEvent)).hasMotion);
}

void MotionFilterTest::knowsThePointers()
{
    MotionFilter filter;
    const Buffer run = joined(move(1), move(2));
    QCOMPARE(filter.filter(run).bytes, run);
    QVERIFY(!filter.filter(run).hasMotion);
    // The requests may be cut anywhere.
    const Buffer requests = introduction();
    for (std::size_t begin = 0; begin < requests.size(); begin += 7)
        filter.observe(
            Bytes(requests).subspan(begin, std::min<std::size_t>(7, requests.size() - begin)));
    QCOMPARE(filter.filter(run).bytes, move(2));
    // A second pointer is one of its own.
    filter.observe(message(seat, 0, {20}));
    QCOMPARE(filter.filter(joined(move(1), move(2, 20), move(3))).bytes,
             joined(move(2, 20), move(3)));
    QCOMPARE(filter
                 .filter(joined(motion(1), motion(1, 20), frame(), frame(20), motion(2),
                                motion(2, 20), frame(), frame(20)))
                 .bytes,
             joined(motion(2), motion(2, 20), frame(), frame(20)));
    // Once deleted, the number may stand for anything.
    QCOMPARE(filter.filter(joined(deleted(pointer), run)).bytes, joined(deleted(pointer), run));
    QCOMPARE(filter.filter(joined(move(1, 20), move(2, 20))).bytes, move(2, 20));
    // So for a seat's.
    QCOMPARE(filter.filter(deleted(seat)).bytes, deleted(seat));
    filter.observe(message(seat, 0, {pointer}));
    QCOMPARE(filter.filter(run).bytes, run);
}

void MotionFilterTest::holdsBackWhatNobodyWants()
{
    MotionFilter filter = informed();
    filter.setQuietSurfaces({surface});
    const Buffer enter = joined(message(pointer, 0, {1, surface, 0, 0}), frame());
    const Buffer leave = joined(message(pointer, 1, {2, surface}), frame());
    const Buffer press = joined(message(pointer, 3, {3, 1000, 272, 1}), frame());
    const Buffer release = joined(message(pointer, 3, {4, 1000, 272, 0}), frame());
    const Buffer scroll = joined(message(pointer, 4, {1000, 0, 5}), frame());

    QCOMPARE(filter.filter(joined(enter, move(1), otherEvent)).bytes, joined(enter, otherEvent));
    const auto passed = filter.filter(joined(move(2), move(3)));
    QCOMPARE(passed.bytes, Buffer());
    QVERIFY(passed.hasMotion);
    // What the pointer does it does in its place, and dragging is followed.
    QCOMPARE(filter.filter(joined(press, move(4), move(5))).bytes, joined(move(3), press, move(5)));
    QCOMPARE(filter.filter(joined(move(6), release, move(7))).bytes, joined(move(6), release));
    QCOMPARE(filter.filter(joined(move(8), otherEvent, scroll, scroll)).bytes,
             joined(otherEvent, move(8), scroll, scroll));
    // Nothing old comes after something newer, and nothing at all after the pointer has gone.
    const Buffer moveAndPress = joined(motion(10), press);
    QCOMPARE(filter.filter(joined(move(9), moveAndPress, release)).bytes,
             joined(moveAndPress, release));
    QCOMPARE(filter.filter(joined(move(11), leave)).bytes, leave);

    const Buffer enterOther = joined(message(pointer, 0, {1, 77, 0, 0}), frame());
    QCOMPARE(filter.filter(joined(enterOther, move(1))).bytes, joined(enterOther, move(1)));
    QCOMPARE(filter.filter(joined(enter, move(2))).bytes, enter);
    filter.setQuietSurfaces({});
    QCOMPARE(filter.filter(joined(move(3), button)).bytes, joined(move(3), button));
}

void MotionFilterTest::chunksMayEndAnywhere()
{
    const Buffer events = joined(move(1), otherEvent, move(2), deleted(surface), button, move(3));
    for (std::size_t size = 1; size < 28; ++size) {
        MotionFilter filter = informed();
        Buffer passed;
        for (std::size_t begin = 0; begin < events.size(); begin += size) {
            const auto chunk = Bytes(events).subspan(begin, std::min(size, events.size() - begin));
            passed = joined(passed, filter.filter(chunk).bytes);
        }
        QCOMPARE(passed, events);
        // And the next is understood again.
        QCOMPARE(filter.filter(joined(move(4), move(5))).bytes, move(5));
    }
}

void MotionFilterTest::passesNonsenseOn()
{
    // A message that is shorter than its header; a text that is longer than its message.
    const Buffer impossible = joined(Buffer(4, std::byte(7)), Buffer(4, std::byte(0)));
    MotionFilter filter = informed();
    const Buffer bytes = joined(impossible, move(1), move(2));
    QCOMPARE(filter.filter(bytes).bytes, bytes);
    QCOMPARE(filter.filter(bytes).bytes, bytes);

    MotionFilter other;
    other.observe(joined(message(1, 1, {registry}), message(registry, 0, {17, 0xfffffff0, 1})));
    other.observe(message(registry, 0, {}));
    other.observe(joined(bind("wl_seat", seat), message(seat, 0, {pointer})));
    QCOMPARE(other.filter(joined(move(1), move(2))).bytes, move(2));
}

QTEST_APPLESS_MAIN(MotionFilterTest)
#include "MotionFilterTest.moc"
