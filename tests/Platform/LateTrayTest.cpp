#include "Platform/Freedesktop/TrayStatusItem.h"

#include "TrayOnScreen.h"

#include <QProcess>
#include <QSignalSpy>
#include <QTest>

using namespace korvo;
using namespace Qt::StringLiterals;

namespace {

const QColor green(0x10, 0xd0, 0x20);
constexpr int patience = 10000;

} // namespace

class LateTrayTest : public QObject {
    Q_OBJECT
private slots:
    void noTrayAtLoginAndOneThatComesLater();
};

void LateTrayTest::noTrayAtLoginAndOneThatComesLater()
{
    int drawings = 0;
    TrayStatusItem item;
    StatusImage image = coloredImage(green);
    image.draw = [&drawings, draw = image.draw](QPainter &painter, const QSizeF &size) {
        ++drawings;
        draw(painter, size);
    };
    item.setImage(image);
    item.setTitle(u" 0:00:01"_s);
    QSignalSpy shown(&item, &StatusItem::isShownChanged);
    for (int start = 0; start < 2; ++start) {
        QProcess tray;
        tray.start(
            u"trayer"_s,
            {u"--edge"_s, u"top"_s, u"--align"_s, u"right"_s, u"--height"_s, u"28"_s, u"--widthtype"_s, u"request"_s});
        QVERIFY(!item.isShown());
        QCOMPARE(drawings, 0);
        QTRY_VERIFY_WITH_TIMEOUT(item.isShown(), patience);
        QTRY_VERIFY_WITH_TIMEOUT(!findOnScreen(green).isEmpty(), patience);
        tray.terminate();
        QVERIFY(tray.waitForFinished());
        QTRY_VERIFY_WITH_TIMEOUT(!item.isShown(), patience);
        drawings = 0;
    }
    QCOMPARE(shown.count(), 4);
}

QTEST_MAIN(LateTrayTest)
#include "LateTrayTest.moc"
