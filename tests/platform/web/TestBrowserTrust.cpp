#include <QDir>
#include <QNetworkProxy>
#include <QProcess>
#include <QSslSocket>
#include <QStandardPaths>
#include <QTcpServer>

#include "platform/web/PageSandbox.h"
#include "tests/platform/net/TestCertificates.h"
#include "tests/platform/web/BrowserDesk.h"

using namespace Qt::StringLiterals;
using namespace vandrel;
using namespace vandrel::test;

namespace {

/// A server of one page that shows a certificate.
class EncryptedServer : public QTcpServer
{
    Q_OBJECT

public:
    explicit EncryptedServer(TestIdentity identity) : m_identity(std::move(identity))
    {
        setProxy(QNetworkProxy::NoProxy);
        listen(QHostAddress::LocalHost);
    }

    QString address(const QString &path = u"/"_s) const
    {
        return u"https://127.0.0.1:%1%2"_s.arg(serverPort()).arg(path);
    }

    /// Whether anybody has got as far as to ask for a page.
    bool wasAsked = false;

protected:
    void incomingConnection(qintptr descriptor) override
    {
        auto *client = new QSslSocket(this);
        client->setSocketDescriptor(descriptor);
        client->setLocalCertificate(m_identity.certificate);
        client->setPrivateKey(m_identity.key);
        connect(client, &QSslSocket::readyRead, this, [this, client, request = QByteArray()]() mutable {
            request += client->readAll();
            if (!request.contains("\r\n\r\n"))
                return;
            wasAsked = true;
            request.clear();
            const QByteArray page("<title>Secret</title>");
            client->write("HTTP/1.1 200 OK\r\nContent-Type: text/html\r\nContent-Length: "
                          + QByteArray::number(page.size()) + "\r\nConnection: close\r\n\r\n" + page);
            client->disconnectFromHost();
        });
        client->startServerEncryption();
    }

private:
    const TestIdentity m_identity;
};

/// A user who notes what is asked and answers alike each time.
class Witness final : public Prompts
{
public:
    explicit Witness(Answer answer) : m_answer(answer) { setPrompts(this); }
    ~Witness() override { setPrompts(nullptr); }
    Witness(const Witness &) = delete;
    Witness &operator=(const Witness &) = delete;

    Answer messageBox(const MessageBoxRequest &request) override
    {
        asked.append(request.text);
        return m_answer;
    }
    QString inputBox(const InputBoxRequest &) override { return {}; }
    void errorBox(const RuntimeError &failure) override { asked.append(failure.text()); }

    QStringList asked;

private:
    const Answer m_answer;
};

} // namespace

/// Whom the browser trusts, and what it keeps from pages.
class TestBrowserTrust : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// The engine trusts the authorities of the user's own database, which it looks for once.
    void initTestCase()
    {
        if (!runsAsRoot() && !sandboxCanBeMade())
            QSKIP("This system does not let ordinary programs make a sandbox.");
        QVERIFY2(m_certificates.isUsable(), qPrintable(m_certificates.problem()));
        qputenv("HOME", m_home.path().toLocal8Bit());
        // Cameras and microphones that show and tell nothing.
        qputenv("QTWEBENGINE_CHROMIUM_FLAGS", "--use-fake-device-for-media-stream");
        const QString folder = m_home.filePath(u".pki/nssdb"_s);
        QVERIFY(QDir().mkpath(folder));
        const QString database = u"sql:"_s + folder;
        m_knowsTheAuthority = !QStandardPaths::findExecutable(u"certutil"_s).isEmpty()
            && QProcess::execute(u"certutil"_s, {u"-d"_s, database, u"-N"_s, u"--empty-password"_s}) == 0
            && QProcess::execute(u"certutil"_s,
                                 {u"-d"_s, database, u"-A"_s, u"-t"_s, u"C,,"_s, u"-n"_s, u"test"_s, u"-i"_s,
                                  m_certificates.authorityFile()})
                == 0;
    }

    void aTrustedAuthorityIsEnough()
    {
        if (!m_knowsTheAuthority)
            QSKIP("certutil, which tells the engine of an authority, is not installed.");
        Desk desk;
        const EncryptedServer server(m_certificates.good());
        QVERIFY(desk.go(server.address()));
        QCOMPARE(desk.box->LocationName(), u"Secret"_s);
        QCOMPARE(desk.prompts.shown(), 0);
    }

    void aBadCertificateIsRefused_data()
    {
        QTest::addColumn<TestIdentity>("identity");
        QTest::addColumn<QString>("reason");
        QTest::newRow("unknown authority") << m_certificates.unknownAuthority() << u"not trusted"_s;
        QTest::newRow("signed by itself") << m_certificates.selfSigned() << u"not trusted"_s;
        QTest::newRow("another host's") << m_certificates.otherName() << u"does not match"_s;
        QTest::newRow("expired") << m_certificates.expired() << u"expired"_s;
    }
    void aBadCertificateIsRefused()
    {
        QFETCH(TestIdentity, identity);
        QFETCH(QString, reason);
        if (!m_knowsTheAuthority && reason != u"not trusted")
            QSKIP("certutil, which tells the engine of an authority, is not installed.");
        Desk desk;
        Witness user(Answer::No);
        const EncryptedServer server(identity);
        QVERIFY(desk.go(server.address()));
        QCOMPARE(user.asked.size(), 1);
        QVERIFY2(user.asked.first().contains(u"\"127.0.0.1\""_s), qPrintable(user.asked.first()));
        QVERIFY2(user.asked.first().contains(reason), qPrintable(user.asked.first()));
        QVERIFY(!server.wasAsked);
        QVERIFY(desk.box->LocationName() != u"Secret"_s);
        QVERIFY2(desk.status.last() != u"Done"_s, qPrintable(desk.status.last()));
        // Once more it is asked anew.
        QVERIFY(desk.go(server.address()));
        QCOMPARE(user.asked.size(), 2);
        QVERIFY(!server.wasAsked);
    }

    void anAcceptedOneHoldsForTheWindow()
    {
        const EncryptedServer server(m_certificates.unknownAuthority());
        for (int window = 0; window < 2; ++window) {
            Desk desk;
            Witness user(Answer::Yes);
            QVERIFY(desk.go(server.address()));
            QCOMPARE(desk.box->LocationName(), u"Secret"_s);
            QVERIFY(desk.go(server.address(u"/further"_s)));
            QCOMPARE(desk.box->LocationURL(), server.address(u"/further"_s));
            QCOMPARE(user.asked.size(), 1);
        }
    }

    void whatAPageMayNotHave_data()
    {
        QTest::addColumn<QByteArray>("script");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("status");
        const QByteArray media = "navigator.mediaDevices.getUserMedia({%})"
                                 ".then(()=>document.title='given',e=>document.title=e.name)";
        QTest::newRow("camera") << QByteArray(media).replace("%", "video:true") << u"NotAllowedError"_s
                                << u"the camera"_s;
        QTest::newRow("microphone") << QByteArray(media).replace("%", "audio:true") << u"NotAllowedError"_s
                                    << u"the microphone"_s;
        QTest::newRow("camera and microphone") << QByteArray(media).replace("%", "audio:true,video:true")
                                               << u"NotAllowedError"_s << u"the camera and the microphone"_s;
        QTest::newRow("place") << QByteArray("navigator.geolocation.getCurrentPosition("
                                             "()=>document.title='given',e=>document.title='error '+e.code)")
                               << u"error 1"_s << u"your place"_s;
        QTest::newRow("notifications")
            << QByteArray("Notification.requestPermission().then(p=>document.title=p)") << u"denied"_s
            << u"leave to show notifications"_s;
    }
    void whatAPageMayNotHave()
    {
        QFETCH(QByteArray, script);
        QFETCH(QString, title);
        QFETCH(QString, status);
        Desk desk;
        desk.server.page(u"/a"_s, "<title>A</title><script>" + script + "</script>");
        QVERIFY(desk.go(desk.server.address(u"/a"_s)));
        QTRY_COMPARE_WITH_TIMEOUT(desk.box->LocationName(), title, patience);
        QVERIFY2(desk.status.contains(u"127.0.0.1 asked for %1, and was refused."_s.arg(status)),
                 qPrintable(desk.status.join(u'\n')));
    }

private:
    const TestCertificates m_certificates;
    const QTemporaryDir m_home;
    bool m_knowsTheAuthority = false;
};

QTEST_MAIN(TestBrowserTrust)
#include "TestBrowserTrust.moc"
