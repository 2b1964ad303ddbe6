#pragma once

#include <QHash>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUrl>

#include <algorithm>
#include <functional>

namespace velmora
{

/// A web server on loopback, of one test's making. An address that nobody has filled is answered
/// with an error page.
class HttpServer : public QTcpServer
{
public:
    /// The whole answer with its head; empty: none ever comes.
    using Page = std::function<QByteArray()>;

    QHash<QByteArray, Page> pages; ///< by path, without the query
    QList<QByteArray> requests;    ///< paths with their queries

    HttpServer()
    {
        listen(QHostAddress::LocalHost);
        connect(this, &QTcpServer::newConnection, this, [this] {
            QTcpSocket *socket = nextPendingConnection();
            connect(socket, &QTcpSocket::readyRead, this, [this, socket] { serve(*socket); });
            connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        });
    }

    [[nodiscard]] QUrl url() const
    {
        return QUrl(QStringLiteral("http://127.0.0.1:%1").arg(serverPort()));
    }

    /// Requests so far whose path begins with this.
    [[nodiscard]] qsizetype count(const QByteArray &start) const
    {
        return std::count_if(requests.begin(), requests.end(),
                             [&start](const auto &request) { return request.startsWith(start); });
    }

    static QByteArray ok(const QByteArray &body)
    {
        return "HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(body.size()) +
               "\r\nConnection: close\r\n\r\n" + body;
    }

private:
    void serve(QTcpSocket &socket)
    {
        if (!socket.canReadLine()) {
            return;
        }
        const QByteArray path = socket.readAll().split(' ').value(1);
        requests << path;
        const Page page = pages.value(path.split('?').front());
        const QByteArray answer =
            page ? page() : QByteArray("HTTP/1.1 404 Not Found\r\nContent-Length: 4\r\n\r\n<p>?");
        if (!answer.isEmpty()) {
            socket.write(answer);
            socket.disconnectFromHost();
        }
    }
};

} // namespace velmora
