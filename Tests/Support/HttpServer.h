#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QMap>
#include <QObject>
#include <QString>
#include <QTcpServer>
#include <utility>

namespace corv::test {

/// A small HTTP server on the loopback address with answers fixed beforehand. It runs in the event
/// loop of the thread that makes it.
class HttpServer : public QObject
{
    Q_OBJECT

public:
    struct Answer
    {
        Answer(int statusCode = 200, QByteArray content = {}, bool isSilent = false,
               qint64 announced = -1)
            : status(statusCode), body(std::move(content)), silent(isSilent),
              announcedLength(announced)
        {
        }

        int status;
        QByteArray body;
        bool silent;                ///< take the request and never answer
        qint64 announcedLength;     ///< Content-Length to promise instead of the body's; the
                                    ///< connection closes after the body
        QByteArray encoding;        ///< Content-Encoding to name; the body is sent as it is
        bool twoLengths = false;    ///< a second Content-Length, of a byte less, comes first
        bool withoutLength = false; ///< no Content-Length: the end of the connection ends the body
        bool chunked = false;       ///< the body in one chunk and its end, whatever length is named
    };

    struct Request
    {
        QByteArray path;                      ///< as it was in the request line
        QMap<QByteArray, QByteArray> headers; ///< names in lower case
    };

    HttpServer();

    /// "http://127.0.0.1:PORT/"
    QString address() const;

    /// What a path, without its leading "/", is answered with; any other gets a 404.
    void setAnswer(const QByteArray& path, const Answer& answer) { m_answers[path] = answer; }

    const QList<Request>& requests() const { return m_requests; }

signals:
    /// A request has come in and is about to be answered.
    void requested(QByteArray path);

private:
    void serve();

    QTcpServer m_server;
    QHash<QByteArray, Answer> m_answers;
    QList<Request> m_requests;
};

} // namespace corv::test
