// korvo-unfolding FILE.png - draws the panel around the notch at some moments of its unfolding, side by side, as the
// README shows it.

#include "Controllers/NotchWindowController.h"
#include "Fakes/FakePlatform.h"
#include "Views/ViewWorld.h"

#include <QApplication>
#include <QImage>
#include <QPainter>

#include <cstdio>

using namespace korvo;

namespace {

constexpr QSize picture(480, 216); // In points, as all here.
constexpr int gap = 8;
constexpr int barHeight = 28;
constexpr double scale = 1.0;
constexpr double frameTime = 1 / 60.0;
constexpr int columns = 2;

/// What a screen shows of the panel, below its upper edge.
void paintScreen(QPainter &painter, const QPoint &place, FakePanel &panel)
{
    painter.save();
    painter.translate(place);
    painter.setClipRect(QRect(QPoint(), picture));
    painter.fillRect(QRect(QPoint(), picture), QColor(0x3a, 0x5a, 0x7a));
    painter.fillRect(0, 0, picture.width(), barHeight, QColor(0xe8, 0xe8, 0xea));
    QImage content(panel.frame.size() * scale, QImage::Format_ARGB32_Premultiplied);
    content.setDevicePixelRatio(scale);
    content.fill(Qt::transparent);
    panel.content->render(&content);
    QPainter cutter(&content);
    cutter.setRenderHint(QPainter::Antialiasing);
    QPainterPath outside;
    outside.addRect(QRectF(QPointF(), panel.frame.size()));
    cutter.setCompositionMode(QPainter::CompositionMode_DestinationOut);
    cutter.fillPath(outside.subtracted(panel.shape), Qt::black);
    cutter.end();
    painter.drawImage(panel.frame.topLeft(), content);
    painter.restore();
}

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    if (app.arguments().size() != 2) {
        std::fputs("usage: korvo-unfolding FILE.png\n", stderr);
        return 2;
    }
    ViewWorld world;
    world.showTimer({});
    world.poll();
    FakePlatform platform;
    platform.fakeClock.setNow(world.clock.now());
    platform.fakeScreens.setSingle(QRectF(QPointF(), picture), 32);
    NotchWindowController controller(*world.viewModel, platform, world.settings.settings);
    controller.setup();
    const auto pass = [&](int frames) {
        for (int i = 0; i < frames; ++i) {
            platform.fakeClock.advance(frameTime);
            for (int turn = 0; turn < 10; ++turn)
                QCoreApplication::processEvents();
        }
    };

    QImage strip(QSize(columns * (picture.width() + gap) - gap, 3 * (picture.height() + gap) - gap) * scale,
                 QImage::Format_RGB32);
    strip.setDevicePixelRatio(scale);
    strip.fill(Qt::white);
    QPainter painter(&strip);
    int count = 0;
    const auto paint = [&] {
        const QPoint place(count % columns * (picture.width() + gap), count / columns * (picture.height() + gap));
        paintScreen(painter, place, *platform.panel);
        ++count;
    };
    paint(); // At rest,
    controller.updateForTimerState();
    pass(20);
    paint(); // as a strip,
    platform.panel->enter();
    for (const int frames : {2, 2, 3, 20}) {
        pass(frames);
        paint(); // and on its way to the card.
    }
    painter.end();
    return strip.save(app.arguments().at(1)) ? 0 : 1;
}
