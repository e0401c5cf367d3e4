#include "Views/BusyButton.h"

#include "Views/BusyIndicator.h"
#include "Views/FormSection.h"

#include <QEvent>
#include <QIcon>
#include <QIconEngine>
#include <QPainter>

#include <chrono>

namespace korvo {

using namespace std::chrono_literals;

namespace {

/// A spinner at one step, drawn at whatever size and resolution the style asks for.
class SpinnerEngine final : public QIconEngine {
public:
    SpinnerEngine(const QColor &color, int step) : m_color(color), m_step(step) { }

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode, QIcon::State) override
    {
        drawSpokes(*painter, rect, m_color, m_step);
    }
    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override
    {
        QPixmap picture(size);
        picture.fill(Qt::transparent);
        QPainter painter(&picture);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return picture;
    }
    QIconEngine *clone() const override { return new SpinnerEngine(*this); }

private:
    QColor m_color;
    int m_step;
};

} // namespace

BusyButton::BusyButton(const QString &text, QWidget *parent) : QPushButton(text, parent)
{
    setIconSize({14, 14});
    setMinimumHeight(controlHeight(*this));
    setAutoDefault(false);
    m_timer.setInterval(spokeInterval);
    connect(&m_timer, &QTimer::timeout, this, [this] {
        ++m_step;
        showStep();
    });
}

void BusyButton::setBusy(bool isBusy)
{
    if (isBusy == m_timer.isActive())
        return;
    if (isBusy) {
        m_timer.start();
        showStep();
    } else {
        m_timer.stop();
        setIcon({});
    }
}

QSize BusyButton::sizeHint() const
{
    constexpr int air = 16; // Beyond the little that some styles leave beside the words.
    return QPushButton::sizeHint() + QSize(air, 0);
}

void BusyButton::showStep()
{
    setIcon(QIcon(new SpinnerEngine(palette().color(QPalette::Active, QPalette::ButtonText), m_step)));
}

void BusyButton::focusOutEvent(QFocusEvent *event)
{
    m_hadFocus = !isEnabled(); // A disabled widget gives its focus away.
    QPushButton::focusOutEvent(event);
}

void BusyButton::changeEvent(QEvent *event)
{
    QPushButton::changeEvent(event);
    if (event->type() != QEvent::EnabledChange || !m_hadFocus)
        return;
    if (!isEnabled()) {
        m_focusWentTo = window()->focusWidget();
    } else {
        m_hadFocus = false;
        if (window()->focusWidget() == m_focusWentTo)
            setFocus(Qt::OtherFocusReason);
    }
}

} // namespace korvo
