#include "support/webserver.h"

#include "support/patience.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkProxy>

WebServer::WebServer() : scheme(QStringLiteral("http"))
{
    start({});
}

WebServer::WebServer(const QString &certifiedHost) : scheme(QStringLiteral("https"))
{
    start({folder.path(), certifiedHost});
}

WebServer::~WebServer()
{
    if (isSite)
        qunsetenv("VELANTOR_SITE");
    process.kill();
    process.waitForFinished();
}

void WebServer::start(const QStringList &arguments)
{
    // A proxy of the network around does not lead here.
    QNetworkProxy::setApplicationProxy(QNetworkProxy::NoProxy);
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(QStringLiteral("python3"),
                  QStringList(QStringLiteral(WEB_SERVER_SCRIPT)) + arguments);
    port = readLine().toInt();
    if (port == 0)
        qFatal("the web server does not start");
}

QString WebServer::url(const QString &path) const
{
    return QStringLiteral("%1://127.0.0.1:%2").arg(scheme).arg(port) + path;
}

void WebServer::becomeTheSite()
{
    isSite = true;
    qputenv("VELANTOR_SITE", url().toUtf8());
}

void WebServer::setAnswer(const QString &path, const Answer &answer)
{
    QJsonObject headers;
    for (auto header = answer.headers.begin(); header != answer.headers.end(); ++header)
        headers[header.key()] = header.value();
    tell(QJsonDocument(
             QJsonObject{{QStringLiteral("path"), path},
                         {QStringLiteral("status"), answer.status},
                         {QStringLiteral("headers"), headers},
                         {QStringLiteral("body"), QString::fromLatin1(answer.body.toBase64())},
                         {QStringLiteral("how"), answer.how}})
             .toJson(QJsonDocument::Compact));
}

void WebServer::setAnswer(const QString &path, const QByteArray &body, const QString &how,
                          int status)
{
    Answer answer;
    answer.body = body;
    answer.how = how;
    answer.status = status;
    setAnswer(path, answer);
}

QList<WebServer::Request> WebServer::requests()
{
    QList<Request> result;
    const QJsonArray list = QJsonDocument::fromJson(tell("{}")).array();
    for (const QJsonValue &request : list)
        result.append({request[QStringLiteral("path")].toString(),
                       request[QStringLiteral("agent")].toString(),
                       request[QStringLiteral("state")].toString(),
                       static_cast<qint64>(request[QStringLiteral("sent")].toDouble())});
    return result;
}

int WebServer::count(const QString &path)
{
    int found = 0;
    for (const Request &request : requests())
        found += request.path == path;
    return found;
}

WebServer::Request WebServer::latest(const QString &path)
{
    Request found;
    for (const Request &request : requests()) {
        if (request.path == path)
            found = request;
    }
    return found;
}

QByteArray WebServer::tell(const QByteArray &command)
{
    process.write(command + '\n');
    return readLine();
}

QByteArray WebServer::readLine()
{
    while (!process.canReadLine()) {
        if (!process.waitForReadyRead(PATIENCE))
            qFatal("the web server does not answer");
    }
    return process.readLine().trimmed();
}
