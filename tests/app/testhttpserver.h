// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include <QHostAddress>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUrl>

namespace Morvane::Test {

// A minimal HTTP server on 127.0.0.1 that answers every GET with one body and
// records the requested paths.
class TestHttpServer : public QObject
{
    Q_OBJECT

public:
    explicit TestHttpServer(QObject *parent = nullptr)
        : QObject(parent)
    {
        connect(&mServer, &QTcpServer::newConnection, this, &TestHttpServer::accept);
    }

    bool listen() { return mServer.listen(QHostAddress::LocalHost, 0); }
    QUrl baseUrl() const
    {
        return QUrl(QStringLiteral("http://127.0.0.1:%1/").arg(mServer.serverPort()));
    }
    void setBody(const QByteArray &body) { mBody = body; }
    QStringList paths() const { return mPaths; }

private:
    void accept()
    {
        while (QTcpSocket *socket = mServer.nextPendingConnection()) {
            connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
            connect(socket, &QTcpSocket::readyRead, this, [this, socket] {
                QByteArray &request = mPending[socket];
                request += socket->readAll();
                if (!request.contains("\r\n\r\n"))
                    return;
                const QList<QByteArray> words = request.left(request.indexOf("\r\n")).split(' ');
                mPaths.append(words.size() > 1 ? QString::fromLatin1(words.at(1)) : QString());
                mPending.remove(socket);
                socket->write("HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\nContent-Length: "
                              + QByteArray::number(mBody.size())
                              + "\r\nConnection: close\r\n\r\n" + mBody);
                socket->disconnectFromHost();
            });
        }
    }

    QTcpServer mServer;
    QByteArray mBody;
    QStringList mPaths;
    QHash<QTcpSocket *, QByteArray> mPending;
};

} // namespace Morvane::Test
