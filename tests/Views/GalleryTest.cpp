#include "Gallery.h"

#include "LookUp.h"
#include "Views/RoundedBox.h"
#include "Views/SymbolIcon.h"
#include "Views/Theme.h"

#include <QApplication>
#include <QDir>
#include <QTest>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace korvo;

namespace {

/// Pixels that a person could tell apart.
int differingPixels(const QImage &left, const QImage &right)
{
    constexpr int tolerance = 8; // Of each channel.
    int count = 0;
    for (int y = 0; y < left.height(); ++y) {
        for (int x = 0; x < left.width(); ++x) {
            const QRgb a = left.pixel(x, y);
            const QRgb b = right.pixel(x, y);
            count += std::max({qAbs(qRed(a) - qRed(b)), qAbs(qGreen(a) - qGreen(b)), qAbs(qBlue(a) - qBlue(b))})
                > tolerance;
        }
    }
    return count;
}

/// One pixel in 500 may differ, but never as many as the smallest dot has.
int allowedPixels(const QImage &picture)
{
    const double scale = qApp->devicePixelRatio();
    return std::min(picture.width() * picture.height() / 500, int(6 * scale * scale));
}

bool looksLike(const QImage &picture, const QImage &reference)
{
    return picture.size() == reference.size() && differingPixels(picture, reference) <= allowedPixels(reference);
}

gallery::Sample sampleNamed(const QString &name)
{
    for (const auto &sample : gallery::references()) {
        if (sample.name == name)
            return sample;
    }
    qFatal("There is no such sample");
}

QImage referenceFor(const gallery::Sample &sample)
{
    return QImage(QDir(QStringLiteral(KORVO_PICTURES)).filePath(gallery::fileName(sample)));
}

} // namespace

/// The views against pictures that a person has looked at, at each scale. `korvo-views FOLDER --references` draws anew.
class GalleryTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();

    void everySampleLooksAsItDid_data();
    void everySampleLooksAsItDid();
    void anotherColourOfTheSmallestDotIsNoticed();
    void aHiddenSymbolIsNoticed();
    void aPictureOfAnotherSizeIsNoticed();
};

void GalleryTest::initTestCase()
{
    gallery::useFixedLook();
}

void GalleryTest::everySampleLooksAsItDid_data()
{
    QTest::addColumn<gallery::Sample>("sample");
    for (const auto &sample : gallery::references())
        QTest::newRow(qPrintable(sample.name)) << sample;
}

void GalleryTest::everySampleLooksAsItDid()
{
    QFETCH(gallery::Sample, sample);
    const auto picture = sample.draw({});
    const auto reference = referenceFor(sample);
    if (looksLike(picture, reference))
        return;
    QDir folder(QCoreApplication::applicationDirPath());
    folder.mkpath(u"gallery"_s);
    const auto path = folder.filePath(u"gallery/"_s + gallery::fileName(sample));
    picture.save(path);
    if (picture.size() != reference.size())
        QFAIL(qPrintable(u"The size is not that of the reference; see %1"_s.arg(path)));
    QFAIL(qPrintable(u"%1 pixels differ, %2 may; see %3"_s.arg(differingPixels(picture, reference))
                         .arg(allowedPixels(reference))
                         .arg(path)));
}

void GalleryTest::anotherColourOfTheSmallestDotIsNoticed()
{
    const auto sample = sampleNamed(u"panel-running"_s);
    const auto altered = sample.draw([](QWidget &view) {
        const auto dots = visibleIn<RoundedBox>(*childIn(view, u"header"_s));
        dots.at(1)->setColor(theme::systemRed);
    });
    QVERIFY(!looksLike(altered, referenceFor(sample)));
}

void GalleryTest::aHiddenSymbolIsNoticed()
{
    const auto sample = sampleNamed(u"panel-idle"_s);
    const auto altered = sample.draw(
        [](QWidget &view) { visibleIn<SymbolIcon>(*childIn(view, u"todayTasksSection"_s)).first()->hide(); });
    QVERIFY(!looksLike(altered, referenceFor(sample)));
}

void GalleryTest::aPictureOfAnotherSizeIsNoticed()
{
    const auto sample = sampleNamed(u"panel-idle"_s);
    const auto picture = sample.draw({});
    QVERIFY(looksLike(picture, referenceFor(sample)));
    QVERIFY(!looksLike(picture.copy(0, 0, picture.width(), picture.height() - 1), referenceFor(sample)));
}

QTEST_MAIN(GalleryTest)
#include "GalleryTest.moc"
