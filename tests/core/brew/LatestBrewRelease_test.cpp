#include "core/brew/LatestBrewRelease.h"
#include "tests/support/Await.h"

#include <QNetworkAccessManager>
#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

using namespace larkspur;
using namespace larkspur::test;

/// A web service on this machine that gives one answer.
class LatestBrewReleaseTest : public QObject {
    Q_OBJECT

    QTcpServer m_server;
    QByteArray m_answer;
    QByteArray m_request;
    QPointer<QTcpSocket> m_socket; ///< of the last request, as long as it is open
    QNetworkAccessManager m_network;

    QUrl address() const { return QUrl(QString("http://127.0.0.1:%1").arg(m_server.serverPort())); }

  private Q_SLOTS:
    void initTestCase() {
        QVERIFY(m_server.listen(QHostAddress::LocalHost));
        connect(&m_server, &QTcpServer::newConnection, this, [this] {
            QTcpSocket *socket = m_server.nextPendingConnection();
            connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
            m_socket = socket;
            connect(socket, &QTcpSocket::readyRead, this, [this, socket] {
                m_request += socket->readAll();
                if (m_answer.isEmpty() || !m_request.endsWith("\r\n\r\n"))
                    return;
                socket->write(m_answer);
                socket->disconnectFromHost();
            });
        });
    }
    void init() { m_request.clear(); }

    void answers_data() {
        QTest::addColumn<QByteArray>("answer");
        QTest::addColumn<QString>("tag");
        const QByteArray ok = "HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n";
        QTest::newRow("a release") << ok + "{\"tag_name\":\"6.0.18\",\"name\":\"x\"}" << "6.0.18";
        QTest::newRow("no tag") << ok + "{\"name\":\"x\"}" << "";
        QTest::newRow("half an answer") << ok + "{\"tag_name\":\"6.0" << "";
        QTest::newRow("refused")
            << QByteArray("HTTP/1.1 403 Forbidden\r\nConnection: close\r\n\r\n{\"tag_name\":\"1\"}") << "";
        QTest::newRow("no web service") << QByteArray("nonsense\r\n\r\n") << "";
    }
    void answers() {
        QFETCH(QByteArray, answer);
        QFETCH(QString, tag);
        m_answer = answer;
        LatestBrewRelease release(m_network, address());
        QCOMPARE(await(release.fetch()).value_or(QString()), tag);
        QVERIFY(m_request.startsWith("GET /repos/Homebrew/brew/releases/latest HTTP/1.1\r\n"));
        QVERIFY(m_request.toLower().contains("accept: application/vnd.github+json\r\n"));
    }

    void anAnswerWithoutEndIsGivenUp_data() {
        QTest::addColumn<int>("bytes"); // at once
        QTest::addColumn<int>("pause"); // milliseconds
        QTest::newRow("a flood") << 1'000'000 << 0;
        QTest::newRow("a trickle") << 1 << 100;
    }
    void anAnswerWithoutEndIsGivenUp() {
        QFETCH(int, bytes);
        QFETCH(int, pause);
        m_answer.clear();
        LatestBrewRelease release(m_network, address(), pause > 0 ? 1500ms : 60s);
        auto fetching = release.fetch();
        QVERIFY(spinUntil([this] { return m_socket && m_request.endsWith("\r\n\r\n"); }));
        m_socket->write("HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n{\"tag_name\":\"1.0\",\"body\":\"");
        QTimer more;
        qint64 sent = 0;
        connect(&more, &QTimer::timeout, this, [&] {
            if (m_socket && m_socket->bytesToWrite() < bytes)
                sent += m_socket->write(QByteArray(bytes, 'x'));
        });
        more.start(pause);
        QVERIFY(!await(std::move(fetching)));
        QVERIFY(sent < 50'000'000);
        more.stop();           // it would keep the event loop from seeing the end
        EVENTUALLY(!m_socket); // the connection is closed
    }

    void aStopEndsTheWait() {
        m_answer.clear(); // the service never answers
        StopSource stop;
        LatestBrewRelease release(m_network, address());
        auto fetching = release.fetch(stop.get_token());
        QVERIFY(spinUntil([this] { return !m_request.isEmpty(); }));
        stop.request_stop();
        QVERIFY(!await(std::move(fetching)));
    }
};

QTEST_GUILESS_MAIN(LatestBrewReleaseTest)
#include "LatestBrewRelease_test.moc"
