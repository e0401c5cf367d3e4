#include "Platform/Freedesktop/StatusPicture.h"
#include "Fakes/ProportionalFont.h"
#include "Platform/Freedesktop/StatusIconFile.h"

#include <QDir>
#include <QFontMetricsF>
#include <QPainter>
#include <QTemporaryDir>
#include <QTest>

using namespace korvo;
using namespace Qt::StringLiterals;

namespace {

/// A square of 18 points, all of one colour.
StatusImage filled(const QString &key, const QColor &color)
{
    return {key, u""_s, QSizeF(18, 18),
            [color](QPainter &painter, const QSizeF &size) { painter.fillRect(QRectF(QPointF(), size), color); }};
}

/// A disc in the middle, half as wide as the picture, as a template.
StatusImage disc()
{
    StatusImage image{u"disc"_s, u""_s, QSizeF(18, 18), [](QPainter &painter, const QSizeF &size) {
                          painter.setPen(Qt::NoPen);
                          painter.setBrush(Qt::red);
                          painter.drawEllipse(QPointF(size.width() / 2, size.height() / 2), 4.5, 4.5);
                      }};
    image.isTemplate = true;
    return image;
}

/// A strip of 80 pixels with that text, as the columns in which there is ink.
QString inkOf(const QString &text, const QFont &font)
{
    QImage strip(80, 24, QImage::Format_ARGB32_Premultiplied);
    strip.fill(Qt::transparent);
    {
        QPainter painter(&strip);
        painter.setFont(font);
        paintStatusText(painter, strip.rect(), text, Backdrop::dark);
    }
    QString columns;
    for (int x = 0; x < strip.width(); ++x)
        columns.append(strip.pixelColor(x, 12).alpha() > 128 ? u'#' : u'.');
    return columns;
}

QImage sample(const QColor &color, const QColor &patch = {})
{
    QImage image(10, 10, QImage::Format_RGB32);
    image.fill(color);
    if (patch.isValid()) {
        QPainter painter(&image);
        painter.fillRect(0, 0, 10, 4, patch);
    }
    return image;
}

} // namespace

class StatusPictureTest : public QObject {
    Q_OBJECT
private slots:
    void pictureFillsTheSquare_data();
    void pictureFillsTheSquare();
    void aWidePictureStaysInProportion();
    void aPictureWithoutDrawingIsEmpty();
    void drawingAPictureWakesNoThreads();
    void templateTakesTheInkThatReads_data();
    void templateTakesTheInkThatReads();
    void templateOnAnUnknownBackdropHasADarkRim();
    void aRunningTimeKeepsItsPlaceWhileItCounts();
    void backdropIsWhatMostOfTheSampleIs_data();
    void backdropIsWhatMostOfTheSampleIs();
    void eachPictureGetsAFileOfItsOwn();
    void anotherBackdropGetsAFileOfItsOwn();
    void thePictureBeforeStaysAndOlderOnesGo();
    void filesGoAtTheEnd();
    void picturesOfAKilledRunGo();
    void withoutAFolderThereIsNoFile_data();
    void withoutAFolderThereIsNoFile();
};

void StatusPictureTest::pictureFillsTheSquare_data()
{
    QTest::addColumn<int>("side");
    for (const int side : statusPictureSizes)
        QTest::addRow("%d pixels", side) << side;
}

void StatusPictureTest::pictureFillsTheSquare()
{
    QFETCH(int, side);
    const QImage picture = renderStatusImage(filled(u"a"_s, Qt::green), side, Backdrop::unknown);
    QCOMPARE(picture.size(), QSize(side, side));
    for (const QPoint corner : {QPoint(0, 0), QPoint(side - 1, 0), QPoint(0, side - 1), QPoint(side - 1, side - 1)})
        QCOMPARE(picture.pixelColor(corner), QColor(Qt::green));
}

void StatusPictureTest::aWidePictureStaysInProportion()
{
    StatusImage wide = filled(u"a"_s, Qt::green);
    wide.size = QSizeF(36, 18);
    const QImage picture = renderStatusImage(wide, 32, Backdrop::unknown);
    QCOMPARE(picture.pixelColor(16, 16), QColor(Qt::green));
    QCOMPARE(picture.pixelColor(0, 9), QColor(Qt::green));
    QCOMPARE(picture.pixelColor(31, 22), QColor(Qt::green));
    QCOMPARE(picture.pixelColor(16, 6).alpha(), 0);
    QCOMPARE(picture.pixelColor(16, 25).alpha(), 0);
}

void StatusPictureTest::aPictureWithoutDrawingIsEmpty()
{
    const QImage picture = renderStatusImage({}, 22, Backdrop::light);
    QCOMPARE(picture.size(), QSize(22, 22));
    QCOMPARE(picture.pixelColor(11, 11).alpha(), 0);
}

void StatusPictureTest::templateTakesTheInkThatReads_data()
{
    QTest::addColumn<Backdrop>("backdrop");
    QTest::addColumn<bool>("isInkLight");
    QTest::newRow("near white on a dark bar") << Backdrop::dark << true;
    QTest::newRow("near black on a light bar") << Backdrop::light << false;
    QTest::newRow("near white where the bar isn't known") << Backdrop::unknown << true;
}

void StatusPictureTest::templateTakesTheInkThatReads()
{
    QFETCH(Backdrop, backdrop);
    const QColor ink = renderStatusImage(disc(), 32, backdrop).pixelColor(16, 16);
    QCOMPARE(ink.alpha(), 255);
    QCOMPARE(ink.saturation(), 0);
    QTEST(ink.lightness() > 200, "isInkLight");
    QVERIFY(ink.lightness() > 200 || ink.lightness() < 60);
}

void StatusPictureTest::templateOnAnUnknownBackdropHasADarkRim()
{
    const QPoint outside(7, 16); // The disc's edge is at x = 8.
    const QColor rim = renderStatusImage(disc(), 32, Backdrop::unknown).pixelColor(outside);
    QVERIFY(rim.alpha() > 80);
    QVERIFY(rim.lightness() < 80);
    QCOMPARE(renderStatusImage(disc(), 32, Backdrop::dark).pixelColor(outside).alpha(), 0);
    QCOMPARE(renderStatusImage(disc(), 32, Backdrop::light).pixelColor(outside).alpha(), 0);
}

void StatusPictureTest::aRunningTimeKeepsItsPlaceWhileItCounts()
{
    const QFont font = proportionalFont(20);
    const QFontMetricsF metrics(font);
    QCOMPARE(metrics.horizontalAdvance(u'1') * 2, metrics.horizontalAdvance(u'0'));
    // A blank of 5 pixels, digits of 12, colons of 4.
    QCOMPARE(statusTextWidth(font, u" 1:11:11"_s), 73.0);
    QCOMPARE(statusTextWidth(font, u" 0:00:00"_s), 73.0);
    // The columns of ink: the narrow digit stands in the middle of its cell.
    QCOMPARE(inkOf(u" 0:00:00"_s, font),
             u".....##########..##..##########..##########..##..##########..##########........."_s);
    QCOMPARE(inkOf(u" 1:11:11"_s, font),
             u"........####.....##.....####........####.....##.....####........####............"_s);
}

void StatusPictureTest::backdropIsWhatMostOfTheSampleIs_data()
{
    QTest::addColumn<QImage>("piece");
    QTest::addColumn<Backdrop>("backdrop");
    QTest::newRow("a light bar") << sample(QColor(0xf6, 0xf5, 0xf4)) << Backdrop::light;
    QTest::newRow("a dark bar") << sample(QColor(0x2d, 0x2d, 0x2d)) << Backdrop::dark;
    QTest::newRow("a light bar with dark text") << sample(Qt::white, Qt::black) << Backdrop::light;
    QTest::newRow("a black bar with light text") << sample(Qt::black, Qt::white) << Backdrop::dark;
    QTest::newRow("nothing but black may be a refusal") << sample(Qt::black) << Backdrop::unknown;
    QTest::newRow("nothing") << QImage() << Backdrop::unknown;
}

void StatusPictureTest::backdropIsWhatMostOfTheSampleIs()
{
    QFETCH(QImage, piece);
    QTEST(backdropOf(piece), "backdrop");
}

void StatusPictureTest::eachPictureGetsAFileOfItsOwn()
{
    const QTemporaryDir folder;
    StatusIconFile file(folder.path());
    const QString green = file.pathFor(filled(u"green"_s, Qt::green), Backdrop::unknown);
    QCOMPARE(file.pathFor(filled(u"green"_s, Qt::green), Backdrop::unknown), green);
    const QString red = file.pathFor(filled(u"red"_s, Qt::red), Backdrop::unknown);
    QVERIFY(QDir::isAbsolutePath(red));
    QVERIFY(red != green);
    QCOMPARE(QImage(green).pixelColor(11, 11), QColor(Qt::green));
    QCOMPARE(QImage(red).pixelColor(11, 11), QColor(Qt::red));
}

void StatusPictureTest::anotherBackdropGetsAFileOfItsOwn()
{
    const QTemporaryDir folder;
    StatusIconFile file(folder.path());
    const QString light = file.pathFor(disc(), Backdrop::light);
    const QString dark = file.pathFor(disc(), Backdrop::dark);
    QVERIFY(dark != light);
    QCOMPARE(file.pathFor(disc(), Backdrop::dark), dark);
    QVERIFY(QImage(light).pixelColor(11, 11).lightness() < 60);
    QVERIFY(QImage(dark).pixelColor(11, 11).lightness() > 200);
}

void StatusPictureTest::thePictureBeforeStaysAndOlderOnesGo()
{
    const QTemporaryDir folder;
    StatusIconFile file(folder.path());
    const QString first = file.pathFor(filled(u"1"_s, Qt::red), Backdrop::unknown);
    const QString second = file.pathFor(filled(u"2"_s, Qt::red), Backdrop::unknown);
    const QString third = file.pathFor(filled(u"3"_s, Qt::red), Backdrop::unknown);
    QVERIFY(!QFile::exists(first));
    QVERIFY(QFile::exists(second));
    QVERIFY(QFile::exists(third));
}

void StatusPictureTest::filesGoAtTheEnd()
{
    const QTemporaryDir folder;
    {
        StatusIconFile file(folder.path());
        QVERIFY(QFile::exists(file.pathFor(filled(u"1"_s, Qt::red), Backdrop::unknown)));
    }
    QVERIFY(QDir(folder.path()).isEmpty());
}

void StatusPictureTest::picturesOfAKilledRunGo()
{
    const QTemporaryDir folder;
    const auto put = [&folder](const QString &name) {
        QFile file(folder.filePath(name));
        return file.open(QIODevice::WriteOnly);
    };
    const QString dead = u"korvo-status-99999999-3.png"_s;
    const QString alive = u"korvo-status-1-3.png"_s;
    const QString strange = u"something-else.png"_s;
    QVERIFY(put(dead) && put(alive) && put(strange));
    StatusIconFile file(folder.path());
    file.pathFor(filled(u"1"_s, Qt::red), Backdrop::unknown);
    QVERIFY(!QFile::exists(folder.filePath(dead)));
    QVERIFY(QFile::exists(folder.filePath(alive)));
    QVERIFY(QFile::exists(folder.filePath(strange)));
}

void StatusPictureTest::withoutAFolderThereIsNoFile_data()
{
    QTest::addColumn<QString>("folder");
    QTest::newRow("none named") << u""_s;
    QTest::newRow("one that doesn't exist") << u"/nonexistent/run"_s;
}

void StatusPictureTest::withoutAFolderThereIsNoFile()
{
    QFETCH(QString, folder);
    StatusIconFile file(folder);
    QCOMPARE(file.pathFor(filled(u"1"_s, Qt::red), Backdrop::unknown), QString());
}

void StatusPictureTest::drawingAPictureWakesNoThreads()
{
    const StatusImage ring{u"ring"_s, u""_s, QSizeF(18, 18), [](QPainter &painter, const QSizeF &) {
                               painter.setPen(QPen(QColor(255, 0, 0, 50), 2.5)); // What is opaque is filled at once.
                               painter.drawEllipse(QPointF(9, 9), 6.5, 6.5);
                           }};
    const auto threads = QDir(u"/proc/self/task"_s).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const int side : statusPictureSizes) {
        renderStatusImage(ring, side, Backdrop::dark);
        renderStatusImage(disc(), side, Backdrop::unknown);
    }
    QCOMPARE(QDir(u"/proc/self/task"_s).entryList(QDir::Dirs | QDir::NoDotAndDotDot), threads);
}

QTEST_MAIN(StatusPictureTest)
#include "StatusPictureTest.moc"
