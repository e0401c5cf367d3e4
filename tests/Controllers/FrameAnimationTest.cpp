#include "Controllers/FrameAnimation.h"

#include "Fakes/FakeClock.h"
#include "Utilities/Spawn.h"

#include <QList>
#include <QTest>

#include <memory>

using namespace korvo;

namespace {

constexpr TimingCurve curve{{0.32, 0.72}, {0, 1}};
constexpr TimingCurve straight{{0.25, 0.25}, {0.75, 0.75}};
constexpr Clock::Seconds duration(0.4);
const QRect small(540, -10, 200, 47);
const QRect large(420, -10, 440, 210);
constexpr double frameTime = 1 / 60.0;

} // namespace

class FrameAnimationTest : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void nothingMovesBeforeTheFirstFrame();
    void thereAreSixtyFramesASecondAndNoneAfterTheLast();
    void theFramesFollowTheCurve();
    void theLastFrameIsTheTarget();
    void whatIsCentredStaysCentred();
    void lateFramesAreLeftOut();
    void noWayToGoRunsNothing();
    void theSameTargetDoesNotBeginAnew();
    void anotherTargetBeginsFromWhereItIs();
    void stoppingLeavesTheFrameWhereItIs();
    void itMayGoWhileItRuns();

private:
    /// Lets one frame pass.
    void pass();
    bool isAtRest() { return m_clock->sleeperCount() == 0; }

    std::unique_ptr<FakeClock> m_clock;
    std::unique_ptr<FrameAnimation> m_animation;
    QList<QRect> m_frames;
};

void FrameAnimationTest::init()
{
    m_frames.clear();
    m_clock = std::make_unique<FakeClock>();
    m_animation = std::make_unique<FrameAnimation>(*m_clock, [this](const QRect &frame) { m_frames.append(frame); });
}

void FrameAnimationTest::cleanup()
{
    m_animation.reset();
    QVERIFY(finishSpawned(2000));
}

void FrameAnimationTest::pass()
{
    const auto before = m_frames.size();
    m_clock->advance(frameTime);
    QTRY_COMPARE(m_frames.size(), before + 1);
}

void FrameAnimationTest::nothingMovesBeforeTheFirstFrame()
{
    m_animation->start(small, large, duration, curve);
    QVERIFY(m_frames.isEmpty());
    QVERIFY(m_animation->isRunning());
}

void FrameAnimationTest::thereAreSixtyFramesASecondAndNoneAfterTheLast()
{
    m_animation->start(small, large, duration, curve);
    for (int i = 0; i < 24; ++i)
        pass();
    QVERIFY(!m_animation->isRunning());
    QVERIFY(finishSpawned(2000));
    QVERIFY(isAtRest());
    QCOMPARE(m_frames.size(), 24);
    for (const auto &wait : m_clock->waits)
        QVERIFY(wait.kind == FakeClock::Kind::pause && qAbs(wait.seconds - frameTime) < 1e-6);
}

void FrameAnimationTest::theFramesFollowTheCurve()
{
    m_animation->start(QRect(0, 0, 100, 100), QRect(0, 0, 1100, 100), duration, curve);
    for (int i = 1; i < 24; ++i) {
        pass();
        const double width = 100 + 1000 * curve.at(i * frameTime / duration.count());
        QVERIFY(qAbs(m_frames.last().width() - width) <= 1);
    }
}

void FrameAnimationTest::theLastFrameIsTheTarget()
{
    m_animation->start(small, large, duration, curve);
    m_clock->advance(10);
    QTRY_COMPARE(m_frames, QList<QRect>{large});
}

void FrameAnimationTest::whatIsCentredStaysCentred()
{
    m_animation->start(small, large, duration, curve);
    while (m_animation->isRunning()) {
        pass();
        QCOMPARE(2 * m_frames.last().x() + m_frames.last().width(), 2 * small.x() + small.width());
        QCOMPARE(m_frames.last().y(), -10);
    }
}

void FrameAnimationTest::lateFramesAreLeftOut()
{
    m_animation->start(QRect(0, 0, 100, 100), QRect(0, 0, 1100, 100), duration, straight);
    m_clock->advance(0.21); // A busy machine.
    QTRY_COMPARE(m_frames.size(), 1);
    QVERIFY(qAbs(m_frames.last().width() - 625) <= 1);
    QTRY_COMPARE(m_clock->waits.size(), 2);
    QVERIFY(qAbs(m_clock->waits.last().seconds - (13 * frameTime - 0.21)) < 1e-6); // Back in step.
}

void FrameAnimationTest::noWayToGoRunsNothing()
{
    m_animation->start(small, small, duration, curve);
    QVERIFY(!m_animation->isRunning());
    QVERIFY(isAtRest());
    QVERIFY(m_frames.isEmpty());
}

void FrameAnimationTest::theSameTargetDoesNotBeginAnew()
{
    m_animation->start(small, large, duration, curve);
    for (int i = 0; i < 12; ++i)
        pass();
    m_animation->start(m_frames.last(), large, duration, curve);
    for (int i = 0; i < 12; ++i)
        pass();
    QVERIFY(!m_animation->isRunning());
    QCOMPARE(m_frames.last(), large);
}

void FrameAnimationTest::anotherTargetBeginsFromWhereItIs()
{
    m_animation->start(small, large, duration, curve);
    for (int i = 0; i < 6; ++i)
        pass();
    const QRect halfway = m_frames.last();
    m_animation->start(halfway, small, Clock::Seconds(0.3), curve);
    QTRY_COMPARE(m_clock->sleeperCount(), 1);
    pass();
    QVERIFY(m_frames.last().height() < halfway.height());
    QVERIFY(m_frames.last().height() > small.height());
    for (int i = 1; i < 18; ++i)
        pass();
    QCOMPARE(m_frames.last(), small);
    QVERIFY(!m_animation->isRunning());
}

void FrameAnimationTest::stoppingLeavesTheFrameWhereItIs()
{
    m_animation->start(small, large, duration, curve);
    pass();
    m_animation->stop();
    QVERIFY(finishSpawned(2000));
    m_clock->advance(1);
    QVERIFY(isAtRest());
    QCOMPARE(m_frames.size(), 1);
    QVERIFY(!m_animation->isRunning());
}

void FrameAnimationTest::itMayGoWhileItRuns()
{
    m_animation->start(small, large, duration, curve);
    m_animation.reset();
    QVERIFY(finishSpawned(2000));
    QVERIFY(m_frames.isEmpty());
}

QTEST_GUILESS_MAIN(FrameAnimationTest)
#include "FrameAnimationTest.moc"
