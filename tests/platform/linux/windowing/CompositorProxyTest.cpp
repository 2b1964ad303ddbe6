#include "platform/linux/wayland/CompositorProxy.h"

#include <QTest>

#include <array>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>

using namespace velmora;

namespace
{

constexpr int patience = 20'000; // milliseconds, for a loaded machine

/// Both ends, and the proxy between them.
struct Connection {
    Connection()
    {
        const auto pair = [](UniqueFd &ours, UniqueFd &theirs) {
            std::array<int, 2> ends{};
            socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends.data());
            ours = UniqueFd(ends[0]);
            theirs = UniqueFd(ends[1]);
        };
        UniqueFd toCompositor;
        UniqueFd toClient;
        pair(compositor, toCompositor);
        pair(client, toClient);
        proxy = std::make_unique<CompositorProxy>(std::move(toCompositor), std::move(toClient));
    }

    UniqueFd compositor;
    UniqueFd client;
    std::unique_ptr<CompositorProxy> proxy;
};

bool isReady(const UniqueFd &socket, short events)
{
    pollfd watched{socket.get(), events, 0};
    return poll(&watched, 1, patience) == 1;
}

void sendAll(const UniqueFd &socket, QByteArray bytes)
{
    while (!bytes.isEmpty()) {
        QVERIFY(isReady(socket, POLLOUT));
        const auto size = send(socket.get(), bytes.constData(), size_t(bytes.size()), MSG_NOSIGNAL);
        QVERIFY(size > 0);
        bytes.remove(0, size);
    }
}

/// So many bytes, or fewer at the end of the connection.
QByteArray received(const UniqueFd &socket, qsizetype size)
{
    QByteArray bytes;
    QByteArray buffer(65536, '\0');
    while (bytes.size() < size && isReady(socket, POLLIN)) {
        const auto part = recv(socket.get(), buffer.data(), size_t(buffer.size()), 0);
        if (part <= 0)
            break;
        bytes.append(buffer.constData(), part);
    }
    return bytes;
}

bool isAtEnd(const UniqueFd &socket)
{
    char byte = 0;
    return isReady(socket, POLLIN) && recv(socket.get(), &byte, 1, 0) == 0;
}

/// A whole message without meaning to the proxy.
QByteArray message(quint32 object, const QByteArray &arguments)
{
    const std::array<quint32, 2> header{object, quint32(8 + arguments.size()) << 16 | 7};
    return QByteArray(reinterpret_cast<const char *>(header.data()), 8) + arguments;
}

QByteArray manyMessages(int count)
{
    QByteArray bytes;
    for (int i = 0; i < count; ++i)
        bytes += message(quint32(i + 100), QByteArray(i % 500 * 4, char(i)));
    return bytes;
}

} // namespace

class CompositorProxyTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void passesBothWays();
    void passesDescriptors();
    void keepsWhatABusyClientLeaves();
    void endsWithEitherSide();
    void needsACompositor();
};

void CompositorProxyTest::passesBothWays()
{
    const Connection connection;
    const QByteArray bytes = manyMessages(600);
    sendAll(connection.client, message(1, "abcd"));
    QCOMPARE(received(connection.compositor, 12), message(1, "abcd"));
    // Cut anywhere, and more than a socket takes at once.
    for (qsizetype begin = 0; begin < bytes.size(); begin += 12'345) {
        const QByteArray part = bytes.mid(begin, 12'345);
        sendAll(connection.compositor, part);
        sendAll(connection.client, part);
    }
    QCOMPARE(received(connection.client, bytes.size()), bytes);
    QCOMPARE(received(connection.compositor, bytes.size()), bytes);
}

void CompositorProxyTest::passesDescriptors()
{
    const Connection connection;
    for (int round = 0; round < 2; ++round) {
        std::array<int, 2> pipeEnds{};
        QCOMPARE(pipe2(pipeEnds.data(), O_CLOEXEC), 0);
        const UniqueFd reading(pipeEnds[0]);
        UniqueFd writing(pipeEnds[1]);
        // With the first half of a message, whose other half comes later.
        QByteArray bytes = message(5, "12345678");
        iovec part{bytes.data(), 6};
        alignas(cmsghdr) std::array<std::byte, CMSG_SPACE(sizeof(int))> control{};
        msghdr header{};
        header.msg_iov = &part;
        header.msg_iovlen = 1;
        header.msg_control = control.data();
        header.msg_controllen = control.size();
        cmsghdr *const rights = CMSG_FIRSTHDR(&header);
        rights->cmsg_level = SOL_SOCKET;
        rights->cmsg_type = SCM_RIGHTS;
        rights->cmsg_len = CMSG_LEN(sizeof(int));
        const int number = writing.get();
        std::memcpy(CMSG_DATA(rights), &number, sizeof number);
        QCOMPARE(sendmsg(connection.compositor.get(), &header, 0), 6);
        sendAll(connection.compositor, bytes.mid(6));
        writing = UniqueFd();

        QVERIFY(isReady(connection.client, POLLIN));
        QByteArray room(64, '\0');
        part = {room.data(), size_t(room.size())};
        header.msg_controllen = control.size();
        QCOMPARE(recvmsg(connection.client.get(), &header, MSG_CMSG_CLOEXEC), bytes.size());
        QCOMPARE(room.left(bytes.size()), bytes);
        QVERIFY(CMSG_FIRSTHDR(&header));
        int passed = -1;
        std::memcpy(&passed, CMSG_DATA(CMSG_FIRSTHDR(&header)), sizeof passed);
        {
            const UniqueFd received(passed);
            QCOMPARE(write(passed, "x", 1), 1);
        }
        // The proxy has kept none of its own.
        char byte = 0;
        QCOMPARE(read(reading.get(), &byte, 1), 1);
        QCOMPARE(read(reading.get(), &byte, 1), 0);
    }
}

/// A compositor closes the connection of a client that lets events pile up in the socket.
void CompositorProxyTest::keepsWhatABusyClientLeaves()
{
    const Connection connection;
    const QByteArray bytes = manyMessages(900); // some 900 kB, several times a socket's room
    sendAll(connection.compositor, bytes);
    QCOMPARE(received(connection.client, bytes.size()), bytes);
}

void CompositorProxyTest::endsWithEitherSide()
{
    {
        Connection connection;
        sendAll(connection.compositor, message(3, "last"));
        connection.compositor = UniqueFd();
        QCOMPARE(received(connection.client, 12), message(3, "last"));
        QVERIFY(isAtEnd(connection.client));
    }
    {
        Connection connection;
        sendAll(connection.client, message(3, "last"));
        connection.client = UniqueFd();
        QCOMPARE(received(connection.compositor, 12), message(3, "last"));
        QVERIFY(isAtEnd(connection.compositor));
    }
    // The proxy may go first.
    Connection connection;
    connection.proxy.reset();
    QVERIFY(isAtEnd(connection.compositor));
    QVERIFY(isAtEnd(connection.client));
}

void CompositorProxyTest::needsACompositor()
{
    qputenv("WAYLAND_DISPLAY", "/nonexistent");
    qunsetenv("WAYLAND_SOCKET");
    QVERIFY(!CompositorProxy::interpose());
    QVERIFY(!qEnvironmentVariableIsSet("WAYLAND_SOCKET"));
}

QTEST_APPLESS_MAIN(CompositorProxyTest)
#include "CompositorProxyTest.moc"
