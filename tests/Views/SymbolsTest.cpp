#include "Views/Symbols.h"

#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QSet>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

constexpr Symbol allSymbols[]
    = {Symbol::timer,          Symbol::wifiExclamationmark, Symbol::stopFill,   Symbol::arrowUpRightSquare,
       Symbol::gear,           Symbol::gearBadge,           Symbol::power,      Symbol::playFill,
       Symbol::stopCircleFill, Symbol::playCircle,          Symbol::plusCircle, Symbol::network,
       Symbol::clock,          Symbol::checklist,           Symbol::gearshape,  Symbol::checkmarkCircleFill,
       Symbol::xmarkCircleFill};

QImage pictureOf(Symbol symbol, int side, const QColor &color)
{
    QImage picture(side, side, QImage::Format_ARGB32);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    drawSymbol(painter, picture.rect(), symbol, color);
    return picture;
}

/// The part of the square that is inked.
double coverage(const QImage &picture)
{
    double alpha = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            alpha += qAlpha(picture.pixel(x, y)) / 255.0;
    }
    return alpha / (picture.width() * picture.height());
}

void addSymbolRows()
{
    QTest::addColumn<Symbol>("symbol");
    for (const auto symbol : allSymbols)
        QTest::newRow(qPrintable(symbolName(symbol))) << symbol;
}

} // namespace

class SymbolsTest : public QObject {
    Q_OBJECT
private slots:
    void everySymbolStaysInItsSquare_data() { addSymbolRows(); }
    void everySymbolStaysInItsSquare();
    void aTranslucentColourIsNowhereLaidOnTwice_data() { addSymbolRows(); }
    void aTranslucentColourIsNowhereLaidOnTwice();
    void aSymbolIsTheSameAtEverySize_data() { addSymbolRows(); }
    void aSymbolIsTheSameAtEverySize();
    void holesAreHoles();
    void symbolsDifferFromEachOther();
    void imagesOfTheStatusItemTakeTheColourOfTheBar();
};

void SymbolsTest::everySymbolStaysInItsSquare()
{
    QFETCH(Symbol, symbol);
    const auto picture = pictureOf(symbol, 180, Qt::white);
    int inked = 0;
    for (int i = 0; i < 180; ++i) {
        for (const auto &edge : {QPoint(i, 0), QPoint(i, 179), QPoint(0, i), QPoint(179, i)})
            QCOMPARE(qAlpha(picture.pixel(edge)), 0);
        for (int j = 0; j < 180; ++j)
            inked += qAlpha(picture.pixel(i, j)) > 0;
    }
    QVERIFY(inked > 180 * 180 / 12); // It is a drawing, not a speck.
}

void SymbolsTest::aTranslucentColourIsNowhereLaidOnTwice()
{
    QFETCH(Symbol, symbol);
    const auto picture = pictureOf(symbol, 180, QColor(255, 255, 255, 100));
    for (int y = 0; y < 180; ++y) {
        for (int x = 0; x < 180; ++x)
            QVERIFY(qAlpha(picture.pixel(x, y)) <= 101);
    }
}

void SymbolsTest::aSymbolIsTheSameAtEverySize()
{
    QFETCH(Symbol, symbol);
    const double large = coverage(pictureOf(symbol, 360, Qt::white));
    for (const int side : {18, 27, 36})
        QVERIFY(qAbs(coverage(pictureOf(symbol, side, Qt::white)) / large - 1) < 0.06);
}

void SymbolsTest::holesAreHoles()
{
    const auto middle = [](Symbol symbol) { return qAlpha(pictureOf(symbol, 180, Qt::white).pixel(90, 90)); };
    QCOMPARE(middle(Symbol::gear), 0);
    QCOMPARE(middle(Symbol::stopCircleFill), 0);
    QCOMPARE(middle(Symbol::playCircle), 255);
    QCOMPARE(middle(Symbol::gearshape), 0);
    QCOMPARE(middle(Symbol::xmarkCircleFill), 0);
    QCOMPARE(qAlpha(pictureOf(Symbol::checkmarkCircleFill, 180, Qt::white).pixel(80, 118)), 0); // The turn of the tick.
    QCOMPARE(qAlpha(pictureOf(Symbol::gearshape, 180, Qt::white).pixel(90, 48)), 0); // Between wheel and hub.
    QCOMPARE(qAlpha(pictureOf(Symbol::clock, 180, Qt::white).pixel(60, 60)), 0);
    QCOMPARE(qAlpha(pictureOf(Symbol::playCircle, 180, Qt::white).pixel(40, 90)), 0); // Between ring and triangle.
    QCOMPARE(qAlpha(pictureOf(Symbol::power, 180, Qt::white).pixel(75, 40)), 0);      // The opening of the ring.
    QCOMPARE(qAlpha(pictureOf(Symbol::timer, 180, Qt::white).pixel(90, 130)), 0);
}

void SymbolsTest::symbolsDifferFromEachOther()
{
    QSet<QByteArray> pictures;
    QSet<QString> names;
    for (const auto symbol : allSymbols) {
        const auto picture = pictureOf(symbol, 36, Qt::white);
        pictures.insert(QByteArray(reinterpret_cast<const char *>(picture.constBits()), picture.sizeInBytes()));
        names.insert(symbolName(symbol));
    }
    QCOMPARE(pictures.size(), qsizetype(std::size(allSymbols)));
    QCOMPARE(names.size(), qsizetype(std::size(allSymbols)));
}

void SymbolsTest::imagesOfTheStatusItemTakeTheColourOfTheBar()
{
    const auto image = makeSymbolImage(Symbol::timer, u"Korvo"_s);
    QVERIFY(image.isTemplate);
    QCOMPARE(image.size, QSizeF(18, 18));
    QCOMPARE(image.key, u"symbol timer"_s);
    QCOMPARE(image.description, u"Korvo"_s);
    QImage picture(180, 180, QImage::Format_ARGB32);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setPen(Qt::red);
    image.draw(painter, {180, 180});
    QCOMPARE(picture.pixelColor(90, 90), QColor(Qt::red));
}

QTEST_MAIN(SymbolsTest)
#include "SymbolsTest.moc"
