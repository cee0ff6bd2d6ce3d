#include "Support/HttpServer.h"

#include <QTcpSocket>

namespace corv::test {

HttpServer::HttpServer()
{
    m_server.listen(QHostAddress::LocalHost);
    connect(&m_server, &QTcpServer::newConnection, this, [this] { serve(); });
}

QString HttpServer::address() const
{
    return QStringLiteral("http://127.0.0.1:%1/").arg(m_server.serverPort());
}

void HttpServer::serve()
{
    QTcpSocket* socket = m_server.nextPendingConnection();
    connect(socket, &QTcpSocket::readyRead, this, [this, socket] {
        QByteArray text = socket->property("text").toByteArray() + socket->readAll();
        socket->setProperty("text", text);
        if (!text.contains("\r\n\r\n"))
            return;
        socket->setProperty("text", QByteArray());

        const QList<QByteArray> lines = text.left(text.indexOf("\r\n\r\n")).split('\n');
        Request request;
        request.path = lines.first().split(' ').value(1);
        for (int i = 1; i < lines.size(); ++i) {
            const auto colon = lines[i].indexOf(':');
            request.headers[lines[i].left(colon).toLower()] = lines[i].mid(colon + 1).trimmed();
        }
        m_requests << request;
        emit requested(request.path);

        const Answer answer = m_answers.value(request.path.mid(1), Answer{404, "none", false, -1});
        if (answer.silent)
            return;
        const qint64 length =
            answer.announcedLength < 0 ? answer.body.size() : answer.announcedLength;
        QByteArray head = "HTTP/1.1 " + QByteArray::number(answer.status) + " X\r\n";
        if (answer.twoLengths)
            head += "Content-Length: " + QByteArray::number(length - 1) + "\r\n";
        if (!answer.withoutLength)
            head += "Content-Length: " + QByteArray::number(length) + "\r\n";
        if (!answer.encoding.isEmpty())
            head += "Content-Encoding: " + answer.encoding + "\r\n";
        QByteArray body = answer.body;
        if (answer.chunked) {
            head += "Transfer-Encoding: chunked\r\n";
            body = QByteArray::number(body.size(), 16) + "\r\n" + body + "\r\n0\r\n\r\n";
        }
        socket->write(head + "\r\n" + body);
        if (answer.announcedLength >= 0 || answer.withoutLength)
            socket->disconnectFromHost();
    });
    connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
}

} // namespace corv::test
