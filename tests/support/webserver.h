#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>

/// A real web server on this computer, which answers as it is told, also badly.
class WebServer
{
public:
    struct Answer {
        QByteArray body;
        int status = 200;
        QMap<QString, QString> headers;
        /// One of the ways that webserver.py lists.
        QString how = QStringLiteral("whole");
    };
    struct Request {
        QString path;
        QString agent;
        QString state;   ///< "open", "answered", or "left" by the client
        qint64 sent = 0; ///< bytes of the body
    };

    /// Speaks HTTP.
    WebServer();
    /// Speaks HTTPS, with a certificate for this host by an authority that nobody knows.
    explicit WebServer(const QString &certifiedHost);
    ~WebServer();
    WebServer(const WebServer &) = delete;
    WebServer &operator=(const WebServer &) = delete;

    /// The address of a path, or of the site.
    QString url(const QString &path = QString()) const;
    /// Has the programs that ask siteUrl() take this server for the maker's site while it lives.
    void becomeTheSite();
    /// The authority's certificate as a file.
    QString authority() const { return folder.filePath(QStringLiteral("authority.pem")); }

    /// Until told otherwise a path does not exist.
    void setAnswer(const QString &path, const Answer &answer);
    void setAnswer(const QString &path, const QByteArray &body,
                   const QString &how = QStringLiteral("whole"), int status = 200);
    QList<Request> requests();
    /// Sends what is held.
    void release() { tell("{\"release\": true}"); }
    /// Forgets the answers and the requests.
    void forget() { tell("{\"forget\": true}"); }
    /// How often a path was asked for.
    int count(const QString &path);
    /// The state of the latest request for a path; empty without one.
    QString state(const QString &path) { return latest(path).state; }
    /// The bytes of the body that were sent for that one.
    qint64 sent(const QString &path) { return latest(path).sent; }

private:
    void start(const QStringList &arguments);
    Request latest(const QString &path);
    QByteArray tell(const QByteArray &command);
    QByteArray readLine();

    QTemporaryDir folder;
    QProcess process;
    QString scheme;
    int port = 0;
    bool isSite = false;
};
