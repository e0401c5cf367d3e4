#include "Platform/Freedesktop/StatusNotifierItem.h"

#include "FakeTray.h"
#include "Platform/Freedesktop/ScreenSample.h"

#include <QCoreApplication>
#include <QCursor>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QFile>
#include <QImage>
#include <QPainter>
#include <QProcess>
#include <QSignalSpy>
#include <QTest>
#include <QWidget>
#include <QXmlStreamReader>

using namespace korvo;
using namespace Qt::StringLiterals;

namespace {

using State = StatusNotifierRegistration::State;
constexpr auto itemPath = "/StatusNotifierItem"_L1;
constexpr auto itemInterface = "org.kde.StatusNotifierItem"_L1;
constexpr auto propertiesInterface = "org.freedesktop.DBus.Properties"_L1;
constexpr auto indicatorName = "org.ayatana.indicator.application"_L1;

struct Pixmap {
    int width = 0;
    int height = 0;
    QByteArray bytes;
};

QList<Pixmap> readPixmaps(const QVariant &value)
{
    QList<Pixmap> pixmaps;
    const auto argument = value.value<QDBusArgument>();
    argument.beginArray();
    while (!argument.atEnd()) {
        Pixmap pixmap;
        argument.beginStructure();
        argument >> pixmap.width >> pixmap.height >> pixmap.bytes;
        argument.endStructure();
        pixmaps.append(pixmap);
    }
    argument.endArray();
    return pixmaps;
}

struct ToolTip {
    QString icon;
    QString title;
    QString text;
};

ToolTip readToolTip(const QVariant &value)
{
    ToolTip toolTip;
    const auto argument = value.value<QDBusArgument>();
    argument.beginStructure();
    argument >> toolTip.icon;
    argument.beginArray();
    argument.endArray();
    argument >> toolTip.title >> toolTip.text;
    argument.endStructure();
    return toolTip;
}

/// A bar of one colour at the top of the screen, for which the desktop keeps room.
class Bar : public QWidget {
public:
    explicit Bar(const QColor &color) : QWidget(nullptr, Qt::X11BypassWindowManagerHint)
    {
        setAutoFillBackground(true);
        setColor(color);
        setGeometry(0, 0, 1280, height);
        show();
        reserve(height);
    }
    ~Bar() override { reserve(0); }
    Q_DISABLE_COPY_MOVE(Bar)

    void setColor(const QColor &color) { setPalette(color); }

private:
    static constexpr int height = 28;

    static void reserve(int top)
    {
        QProcess::execute(u"xprop"_s,
                          {u"-root"_s, u"-f"_s, u"_NET_WORKAREA"_s, u"32c"_s, u"-set"_s, u"_NET_WORKAREA"_s,
                           u"0, %1, 1280, %2"_s.arg(top).arg(800 - top)});
    }
};

/// How light the ink is in the largest picture that `tray` gets; 0 is black, 255 is white.
int inkOf(FakeTray &tray)
{
    const auto pixmaps = readPixmaps(tray.itemProperty(u"IconPixmap"_s));
    if (pixmaps.isEmpty())
        return -1;
    const Pixmap &pixmap = pixmaps.last();
    const auto middle = 4 * (pixmap.height / 2 * pixmap.width + pixmap.width / 2);
    return uchar(pixmap.bytes.at(middle + 1));
}

} // namespace

class StatusNotifierItemTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void registersWithTheWatcher();
    void aNameThatIsTakenGivesWayToTheConnectionsOwn();
    void registersWithAWatcherThatComesLater();
    void registersAgainWithTheNextWatcher();
    void aTrayThatGoesNoLongerShowsTheItem();
    void aWatcherWithoutAHostShowsNothing();
    void aHostThatComesLaterShowsTheItem();
    void aHostThatGoesNoLongerShowsTheItem();
    void aWatcherThatKeepsSilentAboutHostsHasOne();
    void aWatcherThatRefusesShowsNothing();
    void aRefusedItemRegistersAgainWhenAHostComes();
    void aRefusedItemRegistersWithTheNextWatcher();

    void propertiesOfTheItem();
    void descriptionOfTheInterfaceListsAllProperties();
    void anEmptyDescriptionGivesWayToTheTitle();
    void pixmapsAreBigEndianAndNotPremultiplied();
    void labelHasAGuide_data();
    void labelHasAGuide();
    void toolTipReadsAsItStands_data();
    void toolTipReadsAsItStands();

    void equalValuesSendNothing();
    void equalValuesDrawNothing();
    void aPictureIsDrawnWhenItIsAskedFor();
    void aNewPictureIsToldOnce();
    void aNewDescriptionIsTold();
    void aNewLabelIsToldWithItsGuide();
    void aNewToolTipIsTold();
    void nobodyIsToldOfWhatNobodyHasRead();
    void nothingIsSentOrDrawnWhileNoTrayShowsTheItem();
    void whatATrayMissedItIsToldWhenItIsBack();

    void aTemplateTakesTheInkOfTheBarThatIsThereWhenItIsRead();
    void aTrayThatReadATemplateTooEarlyIsToldOfItsInk();
    void aTrayThatReadATemplateInTimeIsToldNothing();
    void theBarIsNotLookedAtForEver();
    void theBarOfTheNextTrayIsLookedAtAgain();
    void aPictureInColourIsNotToldAgainForAnotherBar();

    void aClickTellsWhereTheButtonIs();
    void otherGesturesMeanNothing_data();
    void otherGesturesMeanNothing();
    void whatDoesNotFitIsRefused_data();
    void whatDoesNotFitIsRefused();
    void theOtherNameOfTheInterfaceIsAnswered();
    void menuAnswersWhereTheItemSays();

    void onlyTheIndicatorServiceReadsFiles();
    void anIndicatorServiceThatComesLaterReadsFiles();
    void eachPictureHasItsOwnFile();
    void filesGoWithTheItem();
    void anItemMayGoWhileItRegisters();

private:
    StatusImage image(const QString &key, const QColor &color = Qt::red)
    {
        return {key, u"Picture "_s + key, QSizeF(18, 18), [this, color](QPainter &painter, const QSizeF &size) {
                    ++m_drawings;
                    painter.fillRect(QRectF(QPointF(), size), color);
                }};
    }
    StatusImage templateImage(const QString &key)
    {
        StatusImage shape = image(key);
        shape.isTemplate = true;
        return shape;
    }
    /// What the program does each second, for a while.
    void setAgain(const StatusImage &shown)
    {
        for (int second = 0; second < 10; ++second)
            m_item->setImage(shown);
    }
    void show()
    {
        m_tray = std::make_unique<FakeTray>();
        m_item = std::make_unique<StatusNotifierItem>();
        QTRY_VERIFY(m_item->isShown());
    }
    /// Fills the item and lets the tray read all of it, as trays do.
    void showAndRead()
    {
        show();
        fill();
        m_tray->itemProperties();
        m_drawings = 0;
        m_tray->received.clear();
    }
    void fill()
    {
        m_item->setImage(image(u"a"_s));
        m_item->setTitle(u" 0:00:01"_s);
        m_item->setToolTip(u"Write"_s, u"Project"_s);
        m_item->setMenu({{u"Open"_s, true, {}}});
    }
    QStringList sent()
    {
        m_tray->synchronize();
        return m_tray->receivedNames();
    }

    std::unique_ptr<FakeTray> m_tray;
    std::unique_ptr<StatusNotifierItem> m_item;
    int m_drawings = 0;
};

void StatusNotifierItemTest::init()
{
    m_drawings = 0;
}

void StatusNotifierItemTest::cleanup()
{
    m_item.reset();
    m_tray.reset();
}

void StatusNotifierItemTest::registersWithTheWatcher()
{
    show();
    QCOMPARE(m_tray->registered.size(), 1);
    QVERIFY(
        m_tray->registered[0].startsWith(u"org.kde.StatusNotifierItem-%1-"_s.arg(QCoreApplication::applicationPid())));
    m_tray->service = m_tray->registered[0]; // It answers under the name that it gave.
    QCOMPARE(m_tray->itemProperty(u"Id"_s).toString(), u"com.korvo.app"_s);
}

void StatusNotifierItemTest::aNameThatIsTakenGivesWayToTheConnectionsOwn()
{
    show();
    const QString name = m_tray->registered[0];
    const qsizetype number = name.lastIndexOf(u'-') + 1;
    QVERIFY(m_tray->ownName(name.first(number) + QString::number(name.sliced(number).toInt() + 1)));
    const StatusNotifierItem second;
    QTRY_VERIFY(second.isShown());
    QCOMPARE(m_tray->registered.size(), 2);
    QVERIFY2(m_tray->registered[1].startsWith(u':'), qPrintable(m_tray->registered[1]));
    m_tray->service = m_tray->registered[1];
    QCOMPARE(m_tray->itemProperty(u"Id"_s).toString(), u"com.korvo.app"_s);
}

void StatusNotifierItemTest::registersWithAWatcherThatComesLater()
{
    m_tray = std::make_unique<FakeTray>(false);
    m_item = std::make_unique<StatusNotifierItem>();
    QTRY_COMPARE(m_item->state(), State::absent);
    QVERIFY(!m_item->isShown());
    const QSignalSpy shown(m_item.get(), &StatusItem::isShownChanged);
    m_tray->ownWatcherName();
    QTRY_VERIFY(m_item->isShown());
    QCOMPARE(shown.count(), 1);
}

void StatusNotifierItemTest::registersAgainWithTheNextWatcher()
{
    show();
    FakeTray next(false);
    m_tray->releaseWatcherName();
    next.ownWatcherName();
    QTRY_COMPARE(next.registered.size(), 1);
    QTRY_VERIFY(m_item->isShown());
    QCOMPARE(next.registered, m_tray->registered);
}

void StatusNotifierItemTest::aTrayThatGoesNoLongerShowsTheItem()
{
    show();
    m_tray->releaseWatcherName();
    QTRY_COMPARE(m_item->state(), State::absent);
    QVERIFY(!m_item->isShown());
}

void StatusNotifierItemTest::aWatcherWithoutAHostShowsNothing()
{
    m_tray = std::make_unique<FakeTray>();
    m_tray->hasHost = false;
    m_item = std::make_unique<StatusNotifierItem>();
    QTRY_COMPARE(m_item->state(), State::absent);
    QTRY_COMPARE(m_tray->registered.size(), 1);
}

void StatusNotifierItemTest::aHostThatComesLaterShowsTheItem()
{
    aWatcherWithoutAHostShowsNothing();
    m_tray->setHost(true);
    QTRY_VERIFY(m_item->isShown());
    QCOMPARE(m_tray->registered.size(), 1);
}

void StatusNotifierItemTest::aHostThatGoesNoLongerShowsTheItem()
{
    show();
    m_tray->setHost(false);
    QTRY_COMPARE(m_item->state(), State::absent);
}

void StatusNotifierItemTest::aWatcherThatKeepsSilentAboutHostsHasOne()
{
    m_tray = std::make_unique<FakeTray>();
    m_tray->isSilentAboutHosts = true;
    m_item = std::make_unique<StatusNotifierItem>();
    QTRY_VERIFY(m_item->isShown());
}

void StatusNotifierItemTest::aWatcherThatRefusesShowsNothing()
{
    m_tray = std::make_unique<FakeTray>();
    m_tray->isRefusing = true;
    m_item = std::make_unique<StatusNotifierItem>();
    QTRY_COMPARE(m_item->state(), State::refused);
    QVERIFY(!m_item->isShown());
}

void StatusNotifierItemTest::aRefusedItemRegistersAgainWhenAHostComes()
{
    m_tray = std::make_unique<FakeTray>();
    m_tray->isRefusing = true;
    m_tray->hasHost = false;
    m_item = std::make_unique<StatusNotifierItem>();
    QTRY_COMPARE(m_item->state(), State::absent);
    QTRY_COMPARE(m_tray->registered.size(), 1);
    m_tray->isRefusing = false;
    m_tray->setHost(true);
    QTRY_VERIFY(m_item->isShown());
    QCOMPARE(m_tray->registered.size(), 2);
}

void StatusNotifierItemTest::aRefusedItemRegistersWithTheNextWatcher()
{
    aWatcherThatRefusesShowsNothing();
    FakeTray next(false);
    m_tray->releaseWatcherName();
    next.ownWatcherName();
    QTRY_VERIFY(m_item->isShown());
}

void StatusNotifierItemTest::propertiesOfTheItem()
{
    show();
    fill();
    const QVariantMap all = m_tray->itemProperties();
    QCOMPARE(all.value(u"Category"_s).toString(), u"ApplicationStatus"_s);
    QCOMPARE(all.value(u"Id"_s).toString(), u"com.korvo.app"_s);
    QCOMPARE(all.value(u"Title"_s).toString(), u"Write, Project"_s);
    QCOMPARE(all.value(u"Status"_s).toString(), u"Active"_s);
    QCOMPARE(all.value(u"WindowId"_s), QVariant(0));
    QCOMPARE(all.value(u"IconName"_s).toString(), u""_s);
    QCOMPARE(all.value(u"IconThemePath"_s).toString(), u""_s);
    QCOMPARE(all.value(u"IconAccessibleDesc"_s).toString(), u"Picture a"_s);
    QCOMPARE(all.value(u"OverlayIconName"_s).toString(), u""_s);
    QCOMPARE(all.value(u"AttentionIconName"_s).toString(), u""_s);
    QCOMPARE(all.value(u"ItemIsMenu"_s), QVariant(false));
    QCOMPARE(all.value(u"Menu"_s).value<QDBusObjectPath>().path(), u"/MenuBar"_s);
    QCOMPARE(all.value(u"XAyatanaLabel"_s).toString(), u" 0:00:01"_s);
    QCOMPARE(all.value(u"XAyatanaLabelGuide"_s).toString(), u" 00:00:00"_s);
    QCOMPARE(all.value(u"XAyatanaOrderingIndex"_s), QVariant(0U));
    QCOMPARE(readPixmaps(all.value(u"IconPixmap"_s)).size(), 5);
    QCOMPARE(readPixmaps(all.value(u"OverlayIconPixmap"_s)).size(), 0);
    QCOMPARE(readPixmaps(all.value(u"AttentionIconPixmap"_s)).size(), 0);
    QCOMPARE(readToolTip(all.value(u"ToolTip"_s)).title, u"Write"_s);
    QCOMPARE(readToolTip(all.value(u"ToolTip"_s)).text, u"Project"_s);
}

void StatusNotifierItemTest::descriptionOfTheInterfaceListsAllProperties()
{
    show();
    const QVariantMap all = m_tray->itemProperties();
    const auto reply = m_tray->call(itemPath, u"org.freedesktop.DBus.Introspectable"_s, u"Introspect"_s);
    QXmlStreamReader xml(reply.arguments().value(0).toString());
    QStringList properties;
    QStringList methods;
    QStringList interfaces;
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        const QString name = xml.attributes().value("name"_L1).toString();
        if (xml.name() == "interface"_L1)
            interfaces.append(name);
        else if (xml.name() == "property"_L1 && interfaces.last() == itemInterface)
            properties.append(name);
        else if (xml.name() == "method"_L1 && interfaces.last() == itemInterface)
            methods.append(name);
    }
    QVERIFY2(!xml.hasError(), qPrintable(xml.errorString()));
    properties.sort();
    QCOMPARE(properties, all.keys());
    for (const auto &method : {u"Activate"_s, u"SecondaryActivate"_s, u"ContextMenu"_s, u"Scroll"_s})
        QVERIFY(methods.contains(method));
    QVERIFY(interfaces.contains(propertiesInterface));
}

void StatusNotifierItemTest::anEmptyDescriptionGivesWayToTheTitle()
{
    show();
    StatusImage plain = image(u"a"_s);
    plain.description.clear();
    m_item->setImage(plain);
    m_item->setToolTip(u"Write"_s, u""_s);
    QCOMPARE(m_tray->itemProperty(u"IconAccessibleDesc"_s).toString(), u"Write"_s);
    QCOMPARE(m_tray->itemProperty(u"Title"_s).toString(), u"Write"_s);
}

void StatusNotifierItemTest::pixmapsAreBigEndianAndNotPremultiplied()
{
    show();
    m_item->setImage(image(u"a"_s, QColor(0xff, 0x00, 0x00, 0x80)));
    const auto pixmaps = readPixmaps(m_tray->itemProperty(u"IconPixmap"_s));
    QList<int> sides;
    for (const Pixmap &pixmap : pixmaps) {
        QCOMPARE(pixmap.width, pixmap.height);
        QCOMPARE(pixmap.bytes.size(), pixmap.width * pixmap.height * 4);
        QCOMPARE(pixmap.bytes.first(4).toHex(), "80ff0000"_ba);
        QCOMPARE(pixmap.bytes.last(4).toHex(), "80ff0000"_ba);
        sides.append(pixmap.width);
    }
    QCOMPARE(sides, (QList<int>{16, 22, 24, 32, 48}));
}

void StatusNotifierItemTest::labelHasAGuide_data()
{
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("guide");
    QTest::newRow("no label") << u""_s << u""_s;
    QTest::newRow("below ten hours") << u" 1:23:45"_s << u" 00:00:00"_s;
    QTest::newRow("above ten hours") << u" 12:34:56"_s << u" 00:00:00"_s;
    QTest::newRow("above a hundred hours") << u" 123:45:56"_s << u" 000:00:00"_s;
}

void StatusNotifierItemTest::labelHasAGuide()
{
    QFETCH(QString, label);
    show();
    m_item->setTitle(label);
    QCOMPARE(m_tray->itemProperty(u"XAyatanaLabel"_s).toString(), label);
    QTEST(m_tray->itemProperty(u"XAyatanaLabelGuide"_s).toString(), "guide");
}

void StatusNotifierItemTest::toolTipReadsAsItStands_data()
{
    QTest::addColumn<QString>("headline");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("markup");
    QTest::newRow("plain") << u"Write"_s << u"Project"_s << u"Write"_s << u"Project"_s;
    QTest::newRow("markup in the text") << u"Write"_s << u"A & <b>"_s << u"Write"_s << u"A &amp; &lt;b&gt;"_s;
    QTest::newRow("markup in the headline")
        << u"R & <D>"_s << u"Project"_s << u"Korvo"_s << u"<b>R &amp; &lt;D&gt;</b>\nProject"_s;
    QTest::newRow("markup in a headline alone") << u"R & D"_s << u""_s << u"Korvo"_s << u"<b>R &amp; D</b>"_s;
    QTest::newRow("no text") << u"Write"_s << u""_s << u"Write"_s << u""_s;
    QTest::newRow("nothing") << u""_s << u""_s << u""_s << u""_s;
}

void StatusNotifierItemTest::toolTipReadsAsItStands()
{
    QFETCH(QString, headline);
    QFETCH(QString, text);
    show();
    m_item->setToolTip(headline, text);
    const ToolTip toolTip = readToolTip(m_tray->itemProperty(u"ToolTip"_s));
    QTEST(toolTip.title, "title");
    QTEST(toolTip.text, "markup");
}

void StatusNotifierItemTest::equalValuesSendNothing()
{
    showAndRead();
    for (int second = 0; second < 5; ++second)
        fill();
    QCOMPARE(sent(), QStringList());
}

void StatusNotifierItemTest::equalValuesDrawNothing()
{
    showAndRead();
    fill();
    m_tray->itemProperties();
    QCOMPARE(m_drawings, 0);
}

void StatusNotifierItemTest::aPictureIsDrawnWhenItIsAskedFor()
{
    show();
    m_item->setImage(image(u"a"_s));
    m_item->setImage(image(u"b"_s));
    QCOMPARE(sent(), QStringList());
    QCOMPARE(m_drawings, 0);
    QCOMPARE(readPixmaps(m_tray->itemProperty(u"IconPixmap"_s)).size(), 5);
    QVERIFY(m_drawings >= 5);
    m_drawings = 0;
    m_tray->itemProperty(u"IconPixmap"_s);
    QCOMPARE(m_drawings, 0);
}

void StatusNotifierItemTest::aNewPictureIsToldOnce()
{
    showAndRead();
    m_item->setImage(image(u"b"_s));
    m_item->setImage(image(u"b"_s));
    QCOMPARE(sent(), QStringList(u"NewIcon"_s));
    QCOMPARE(m_drawings, 0);
    QCOMPARE(m_tray->received[0].path(), itemPath);
    QCOMPARE(m_tray->received[0].interface(), itemInterface);
}

void StatusNotifierItemTest::aNewDescriptionIsTold()
{
    showAndRead();
    StatusImage other = image(u"a"_s);
    other.description = u"Another"_s;
    m_item->setImage(other);
    QCOMPARE(sent(), QStringList(u"NewIcon"_s));
    QCOMPARE(m_tray->itemProperty(u"IconAccessibleDesc"_s).toString(), u"Another"_s);
}

void StatusNotifierItemTest::aNewLabelIsToldWithItsGuide()
{
    showAndRead();
    m_item->setTitle(u" 0:00:02"_s);
    QCOMPARE(sent(), QStringList(u"XAyatanaNewLabel"_s));
    QCOMPARE(m_tray->received[0].arguments(), (QVariantList{u" 0:00:02"_s, u" 00:00:00"_s}));
}

void StatusNotifierItemTest::aNewToolTipIsTold()
{
    showAndRead();
    m_item->setToolTip(u"Write"_s, u"Other"_s);
    QCOMPARE(sent(), (QStringList{u"NewTitle"_s, u"NewToolTip"_s}));
    QCOMPARE(m_tray->itemProperty(u"Title"_s).toString(), u"Write, Other"_s);
}

void StatusNotifierItemTest::nobodyIsToldOfWhatNobodyHasRead()
{
    show();
    fill();
    m_tray->itemProperty(u"IconPixmap"_s);
    m_item->setTitle(u" 0:00:02"_s);
    m_item->setToolTip(u"Other"_s, u"Other"_s);
    QCOMPARE(sent(), QStringList());
    m_item->setImage(image(u"b"_s));
    QCOMPARE(sent(), QStringList(u"NewIcon"_s));
}

void StatusNotifierItemTest::nothingIsSentOrDrawnWhileNoTrayShowsTheItem()
{
    showAndRead();
    m_tray->setHost(false);
    QTRY_VERIFY(!m_item->isShown());
    m_item->setImage(image(u"b"_s));
    m_item->setTitle(u" 0:00:02"_s);
    m_item->setToolTip(u"Other"_s, u"Other"_s);
    m_item->setMenu({});
    QCOMPARE(sent(), QStringList());
    QCOMPARE(m_drawings, 0);
}

void StatusNotifierItemTest::whatATrayMissedItIsToldWhenItIsBack()
{
    nothingIsSentOrDrawnWhileNoTrayShowsTheItem();
    m_tray->setHost(true);
    QTRY_VERIFY(m_item->isShown());
    QCOMPARE(sent(), (QStringList{u"NewIcon"_s, u"XAyatanaNewLabel"_s, u"NewTitle"_s, u"NewToolTip"_s}));
}

void StatusNotifierItemTest::aTemplateTakesTheInkOfTheBarThatIsThereWhenItIsRead()
{
    Bar bar(Qt::white);
    QTRY_COMPARE(backdropOfBar(), Backdrop::light);
    show();
    m_item->setImage(templateImage(u"a"_s));
    QVERIFY(inkOf(*m_tray) < 60);
    m_drawings = 0;
    QVERIFY(inkOf(*m_tray) < 60);
    QCOMPARE(m_drawings, 0);
    bar.setColor(QColor(0x20, 0x20, 0x20));
    QTRY_COMPARE(backdropOfBar(), Backdrop::dark);
    QVERIFY(inkOf(*m_tray) > 200);
}

void StatusNotifierItemTest::aTrayThatReadATemplateTooEarlyIsToldOfItsInk()
{
    show();
    m_item->setImage(templateImage(u"a"_s));
    QVERIFY(inkOf(*m_tray) > 200); // There is no bar yet: near white with a rim.
    const Bar bar(Qt::white);
    QTRY_COMPARE(backdropOfBar(), Backdrop::light);
    QCOMPARE(sent(), QStringList());
    setAgain(templateImage(u"a"_s));
    QCOMPARE(sent(), QStringList(u"NewIcon"_s));
    QVERIFY(inkOf(*m_tray) < 60);
}

void StatusNotifierItemTest::aTrayThatReadATemplateInTimeIsToldNothing()
{
    const Bar bar(Qt::white);
    QTRY_COMPARE(backdropOfBar(), Backdrop::light);
    show();
    m_item->setImage(templateImage(u"a"_s));
    m_tray->itemProperties();
    m_drawings = 0;
    setAgain(templateImage(u"a"_s));
    QCOMPARE(sent(), QStringList());
    m_tray->itemProperties();
    QCOMPARE(m_drawings, 0);
}

void StatusNotifierItemTest::theBarIsNotLookedAtForEver()
{
    aTrayThatReadATemplateInTimeIsToldNothing();
    const Bar bar(QColor(0x20, 0x20, 0x20));
    QTRY_COMPARE(backdropOfBar(), Backdrop::dark);
    setAgain(templateImage(u"a"_s));
    QCOMPARE(sent(), QStringList());
}

void StatusNotifierItemTest::theBarOfTheNextTrayIsLookedAtAgain()
{
    theBarIsNotLookedAtForEver();
    m_tray->setHost(false);
    QTRY_VERIFY(!m_item->isShown());
    const Bar bar(QColor(0x20, 0x20, 0x20));
    QTRY_COMPARE(backdropOfBar(), Backdrop::dark);
    m_tray->setHost(true);
    QTRY_VERIFY(m_item->isShown());
    QCOMPARE(sent(), QStringList());
    setAgain(templateImage(u"a"_s));
    QCOMPARE(sent(), QStringList(u"NewIcon"_s));
    QVERIFY(inkOf(*m_tray) > 200);
}

void StatusNotifierItemTest::aPictureInColourIsNotToldAgainForAnotherBar()
{
    show();
    m_item->setImage(image(u"a"_s));
    m_tray->itemProperties();
    const Bar bar(Qt::white);
    QTRY_COMPARE(backdropOfBar(), Backdrop::light);
    setAgain(image(u"a"_s));
    QCOMPARE(sent(), QStringList());
}

void StatusNotifierItemTest::aClickTellsWhereTheButtonIs()
{
    show();
    QCursor::setPos(600, 400);
    QSignalSpy activated(m_item.get(), &StatusItem::activated);
    const auto reply = m_tray->call(itemPath, itemInterface, u"Activate"_s, {0, 28});
    QCOMPARE(reply.type(), QDBusMessage::ReplyMessage);
    QTRY_COMPARE(activated.count(), 1);
    const QRect button = activated[0][0].toRect();
    QCOMPARE(button, QRect(1280 - 24, 0, 24, 24)); // There is no bar and the pointer is elsewhere.
}

void StatusNotifierItemTest::otherGesturesMeanNothing_data()
{
    QTest::addColumn<QString>("member");
    QTest::addColumn<QVariantList>("arguments");
    QTest::newRow("the middle button") << u"SecondaryActivate"_s << QVariantList{1, 2};
    QTest::newRow("the middle button on an indicator") << u"XAyatanaSecondaryActivate"_s << QVariantList{7U};
    QTest::newRow("the wheel") << u"Scroll"_s << QVariantList{120, u"vertical"_s};
}

void StatusNotifierItemTest::otherGesturesMeanNothing()
{
    QFETCH(QString, member);
    QFETCH(QVariantList, arguments);
    show();
    QSignalSpy activated(m_item.get(), &StatusItem::activated);
    QCOMPARE(m_tray->call(itemPath, itemInterface, member, arguments).type(), QDBusMessage::ReplyMessage);
    m_tray->call(itemPath, itemInterface, u"Activate"_s, {0, 0});
    QTRY_COMPARE(activated.count(), 1);
}

void StatusNotifierItemTest::whatDoesNotFitIsRefused_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("interface");
    QTest::addColumn<QString>("member");
    QTest::addColumn<QVariantList>("arguments");
    const QString path = itemPath;
    const QString item = itemInterface;
    const QString properties = propertiesInterface;
    QTest::newRow("unknown property") << path << properties << u"Get"_s << QVariantList{item, u"Colour"_s};
    QTest::newRow("property without a name") << path << properties << u"Get"_s << QVariantList{item};
    QTest::newRow("all properties of two interfaces") << path << properties << u"GetAll"_s << QVariantList{item, item};
    QTest::newRow("writing a property") << path << properties << u"Set"_s
                                        << QVariantList{item, u"Status"_s, QVariant::fromValue(QDBusVariant(1))};
    QTest::newRow("unknown method") << path << item << u"Explode"_s << QVariantList();
    QTest::newRow("a click with words for its place")
        << path << item << u"Activate"_s << QVariantList{u"here"_s, u"there"_s};
    QTest::newRow("a click without a place") << path << item << u"Activate"_s << QVariantList();
    QTest::newRow("unknown interface") << path << u"com.example.Item"_s << u"Activate"_s << QVariantList{1, 2};
    QTest::newRow("unknown path") << u"/Elsewhere"_s << item << u"Activate"_s << QVariantList{1, 2};
    QTest::newRow("a path below the item") << path + u"/Deeper"_s << item << u"Activate"_s << QVariantList{1, 2};
}

void StatusNotifierItemTest::whatDoesNotFitIsRefused()
{
    QFETCH(QString, path);
    QFETCH(QString, interface);
    QFETCH(QString, member);
    QFETCH(QVariantList, arguments);
    show();
    QCOMPARE(m_tray->call(path, interface, member, arguments).type(), QDBusMessage::ErrorMessage);
    QCOMPARE(m_tray->itemProperty(u"Status"_s).toString(), u"Active"_s); // Alive and well.
}

void StatusNotifierItemTest::theOtherNameOfTheInterfaceIsAnswered()
{
    show();
    QSignalSpy activated(m_item.get(), &StatusItem::activated);
    const QString standard = u"org.freedesktop.StatusNotifierItem"_s;
    const auto reply = m_tray->call(itemPath, propertiesInterface, u"Get"_s, {standard, u"Id"_s});
    QCOMPARE(reply.arguments().value(0).value<QDBusVariant>().variant().toString(), u"com.korvo.app"_s);
    m_tray->call(itemPath, standard, u"Activate"_s, {1, 1});
    QTRY_COMPARE(activated.count(), 1);
}

void StatusNotifierItemTest::menuAnswersWhereTheItemSays()
{
    show();
    bool isOpen = false;
    m_item->setMenu({{u"Open"_s, true, [&isOpen] { isOpen = true; }}});
    const QString path = m_tray->itemProperty(u"Menu"_s).value<QDBusObjectPath>().path();
    m_tray->call(path, u"com.canonical.dbusmenu"_s, u"Event"_s,
                 {1, u"clicked"_s, QVariant::fromValue(QDBusVariant(0)), 0U});
    QTRY_VERIFY(isOpen);
}

void StatusNotifierItemTest::onlyTheIndicatorServiceReadsFiles()
{
    m_tray = std::make_unique<FakeTray>();
    QVERIFY(m_tray->ownName(indicatorName));
    m_item = std::make_unique<StatusNotifierItem>();
    QTRY_VERIFY(m_item->isShown());
    m_item->setImage(image(u"a"_s, Qt::blue));
    const QString path = m_tray->itemProperty(u"IconName"_s).toString();
    QCOMPARE(QImage(path).pixelColor(5, 5), QColor(Qt::blue));
    QVERIFY(path.startsWith(qEnvironmentVariable("XDG_RUNTIME_DIR") + u'/'));
    QVERIFY(readPixmaps(m_tray->itemProperty(u"IconPixmap"_s)).isEmpty());

    FakeTray other(false);
    other.service = m_tray->service;
    QCOMPARE(other.itemProperty(u"IconName"_s).toString(), u""_s);
    QCOMPARE(readPixmaps(other.itemProperty(u"IconPixmap"_s)).size(), 5);
}

void StatusNotifierItemTest::anIndicatorServiceThatComesLaterReadsFiles()
{
    show();
    m_item->setImage(image(u"a"_s));
    QCOMPARE(m_tray->itemProperty(u"IconName"_s).toString(), u""_s);
    QVERIFY(m_tray->ownName(indicatorName));
    QVERIFY(QFile::exists(m_tray->itemProperty(u"IconName"_s).toString()));
}

void StatusNotifierItemTest::eachPictureHasItsOwnFile()
{
    onlyTheIndicatorServiceReadsFiles();
    const QString blue = m_tray->itemProperty(u"IconName"_s).toString();
    QCOMPARE(m_tray->itemProperty(u"IconName"_s).toString(), blue);
    m_tray->received.clear();
    m_item->setImage(image(u"b"_s, Qt::green));
    QCOMPARE(sent(), QStringList(u"NewIcon"_s));
    const QString green = m_tray->itemProperty(u"IconName"_s).toString();
    QVERIFY(green != blue);
    QCOMPARE(QImage(green).pixelColor(5, 5), QColor(Qt::green));
}

void StatusNotifierItemTest::filesGoWithTheItem()
{
    onlyTheIndicatorServiceReadsFiles();
    const QString path = m_tray->itemProperty(u"IconName"_s).toString();
    QVERIFY(QFile::exists(path));
    m_item.reset();
    QVERIFY(!QFile::exists(path));
}

void StatusNotifierItemTest::anItemMayGoWhileItRegisters()
{
    m_tray = std::make_unique<FakeTray>();
    m_item = std::make_unique<StatusNotifierItem>();
    m_item.reset();
    m_item = std::make_unique<StatusNotifierItem>();
    QTRY_VERIFY(m_item->isShown());
}

QTEST_MAIN(StatusNotifierItemTest)
#include "StatusNotifierItemTest.moc"
