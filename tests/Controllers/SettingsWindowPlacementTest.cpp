#include "Controllers/SettingsWindow.h"

#include "Views/SettingsWorld.h"

#include <QApplication>
#include <QCursor>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QScreen>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

QJsonObject screen(const QString &name, const QRect &place)
{
    return {{u"name"_s, name},
            {u"x"_s, place.x()},
            {u"y"_s, place.y()},
            {u"width"_s, place.width()},
            {u"height"_s, place.height()},
            {u"logicalDpi"_s, 96},
            {u"logicalBaseDpi"_s, 96},
            {u"dpr"_s, 1}};
}

} // namespace

/// On a desktop of three screens.
class SettingsWindowPlacementTest : public QObject {
    Q_OBJECT
private slots:
    void itFitsTheScreenOfThePointer_data();
    void itFitsTheScreenOfThePointer();
};

void SettingsWindowPlacementTest::itFitsTheScreenOfThePointer_data()
{
    QTest::addColumn<QPoint>("pointer");
    QTest::addColumn<QRect>("frame"); // With a title bar 40 high.
    QTest::newRow("in the middle of a screen with room") << QPoint(700, 500) << QRect(399, 169, 640, 660);
    QTest::newRow("as high as a low screen lets it be") << QPoint(1500, 110) << QRect(1631, 100, 640, 600);
    QTest::newRow("no lower than its content needs, with its title bar in sight, on the smallest screen")
        << QPoint(2500, 10) << QRect(2464, 0, 640, 500);
}

void SettingsWindowPlacementTest::itFitsTheScreenOfThePointer()
{
    QFETCH(const QPoint, pointer);
    QFETCH(const QRect, frame);
    QCursor::setPos(pointer);
    QTRY_COMPARE(QCursor::pos(), pointer);
    SettingsWorld world;
    world.show();
    const SettingsWindow window(world.view.release());
    QCOMPARE(window.pos(), frame.topLeft());
    QCOMPARE(window.size(), frame.size() - QSize(0, 40));
    QCOMPARE(window.minimumSize(), window.maximumSize());
}

int main(int argc, char **argv)
{
    const QTemporaryDir folder;
    QFile description(folder.filePath(u"screens.json"_s));
    if (!description.open(QIODevice::WriteOnly))
        return 1;
    description.write(QJsonDocument(QJsonObject{{u"screens"_s,
                                                 QJsonArray{screen(u"wide"_s, {0, 0, 1440, 1000}),
                                                            screen(u"low"_s, {1440, 100, 1024, 600}),
                                                            screen(u"small"_s, {2464, 0, 600, 480})}}})
                          .toJson());
    description.close();
    qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" + QFile::encodeName(description.fileName()));
    QApplication app(argc, argv);
    SettingsWindowPlacementTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "SettingsWindowPlacementTest.moc"
