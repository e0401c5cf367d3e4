#include "EndToEnd/ShippedKorvo.h"
#include "EndToEnd/TrayLookUp.h"
#include "Fakes/RawHttpServer.h"
#include "Models/FieldMapping.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTcpSocket>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

constexpr int patience = ShippedKorvo::patience;
const auto key = u"ntn_notReallyAKey"_s;

/// Settings as an earlier run has left them.
QByteArray settings()
{
    const FieldMapping mapping{.ttTaskRelation = u"Task"_s,
                               .ttStartTime = u"Start"_s,
                               .ttStatus = u"Status"_s,
                               .ttStatusRunning = u"Running"_s};
    const QJsonObject bytes{{u"base64"_s, QString::fromLatin1(mapping.toJson().toBase64())}};
    return QJsonDocument({{u"apiKey"_s, key},
                          {u"timeTrackerDBId"_s, u"4e92ac16-8d7f-8150-a3c4-6b0f1d8e72c5"_s},
                          {u"tasksDBId"_s, u"3d07f5b2-c41e-81a9-b7f8-95d20c6e4a1b"_s},
                          {u"fieldMapping"_s, bytes}})
        .toJson();
}

} // namespace

/// The program as it is installed, started by a user who has set it up before. What would go to Notion goes to a proxy
/// on this machine.
class StoredSettingsTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup() { QVERIFY(m_korvo->end()); }

    void pollingStartsAndAProxyOutOfReachIsShown();
    void pollsGoToTheServerOfNotion();
    void settingsThatLackTheMappingStartNoPolling();

private:
    void useProxy(quint16 port);

    std::unique_ptr<ShippedKorvo> m_korvo;
};

void StoredSettingsTest::init()
{
    m_korvo = std::make_unique<ShippedKorvo>();
    QVERIFY(m_korvo->writeSettings(settings()));
    m_korvo->setVariable(u"no_proxy"_s, {});
    m_korvo->setVariable(u"NO_PROXY"_s, {});
}

void StoredSettingsTest::useProxy(quint16 port)
{
    m_korvo->setVariable(u"https_proxy"_s, u"http://127.0.0.1:%1"_s.arg(port));
}

void StoredSettingsTest::pollingStartsAndAProxyOutOfReachIsShown()
{
    QTcpSocket holder; // Holds a port on which nobody listens.
    QVERIFY(holder.bind(QHostAddress::LocalHost));
    useProxy(holder.localPort());
    QVERIFY(m_korvo->start());
    QVERIFY(m_korvo->log().contains(u"[INFO] Polling started"_s));
    const auto words = u"Network error: Could not connect to api.notion.com"_s;
    QTRY_VERIFY_WITH_TIMEOUT(m_korvo->log().contains(u"[ERROR] Poll failed: "_s + words), patience);
    QTRY_COMPARE_WITH_TIMEOUT(trayItemProperty(m_korvo->item(), u"Title"_s), u"Korvo, "_s + words, patience);
    QVERIFY(m_korvo->log().filter(key).isEmpty());
}

void StoredSettingsTest::pollsGoToTheServerOfNotion()
{
    RawHttpServer proxy;
    proxy.reply(RawHttpServer::response(403), RawHttpServer::After::close);
    useProxy(proxy.port());
    QVERIFY(m_korvo->start());
    QTRY_VERIFY_WITH_TIMEOUT(!proxy.requests.isEmpty(), patience);
    QCOMPARE(proxy.requests.first().line(), "CONNECT api.notion.com:443 HTTP/1.1"_ba);
    QVERIFY(!proxy.requests.first().head.contains(key.toLatin1())); // The key is for the server alone.
}

void StoredSettingsTest::settingsThatLackTheMappingStartNoPolling()
{
    auto json = QJsonDocument::fromJson(settings()).object();
    json.remove(u"fieldMapping"_s);
    QVERIFY(m_korvo->writeSettings(QJsonDocument(json).toJson()));
    QVERIFY(m_korvo->start());
    QVERIFY(m_korvo->log().filter(u"Poll"_s).isEmpty());
}

QTEST_GUILESS_MAIN(StoredSettingsTest)
#include "StoredSettingsTest.moc"
