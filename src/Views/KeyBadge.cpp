#include "Views/KeyBadge.h"

#include "Views/ElidedLabel.h"
#include "Views/Stack.h"
#include "Views/Theme.h"

#include <QPainter>

namespace korvo {

namespace {
constexpr double cornerRadius = 4;
constexpr TextStyle keyStyle{.size = 10, .weight = QFont::Medium};
} // namespace

KeyBadge::KeyBadge(const QString &key, QWidget *parent) : RoundedBox(theme::white(0.06), cornerRadius, parent)
{
    auto *text = (new ElidedLabel(key, keyStyle, theme::white(0.3)))->keptWhole();
    setLayout(hstack({.spacing = 0, .padding = padding(6, 3)}, text));
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void KeyBadge::paintEvent(QPaintEvent *event)
{
    RoundedBox::paintEvent(event);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(theme::white(0.08), 1));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), cornerRadius - 0.5, cornerRadius - 0.5);
}

} // namespace korvo
