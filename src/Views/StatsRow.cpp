#include "Views/StatsRow.h"

#include "Views/ElidedLabel.h"
#include "Views/Stack.h"
#include "Views/Theme.h"

#include <QPainter>
#include <QPainterPath>

namespace korvo {

namespace {

constexpr TextStyle labelStyle{.size = 9, .weight = QFont::DemiBold, .tracking = 0.8};
constexpr TextStyle valueStyle{.size = 12, .weight = QFont::Medium};
constexpr TextStyle highlightStyle{.size = 11, .weight = QFont::DemiBold, .isMonospaced = true};
constexpr double cellLevel = 0.1;
constexpr int gap = 1;

} // namespace

StatItem::StatItem(const QString &label, bool highlight, QWidget *parent) :
    QWidget(parent),
    m_value(highlight ? new ElidedLabel({}, highlightStyle, Qt::white)
                      : new ElidedLabel({}, valueStyle, theme::white(theme::secondary)))
{
    setObjectName(label);
    m_value->setObjectName(QStringLiteral("value"));
    // The gap of the two lines is 2; a third child takes what the tallest cell has more.
    auto *stack
        = vstack({.spacing = 0, .padding = padding(12, 8)}, new ElidedLabel(label, labelStyle, theme::white(0.3)));
    stack->addSpacing(2);
    addToStack(*stack, m_value);
    stack->addStretch(1);
    setLayout(stack);
}

void StatItem::setValue(const QString &value)
{
    m_value->setText(value);
}

StatsRow::StatsRow(const QList<StatItem *> &cells, const QColor &background, double radius, QWidget *parent) :
    QWidget(parent),
    m_cells(cells),
    m_background(background),
    m_radius(radius)
{
    setObjectName(QStringLiteral("statsRow"));
    auto *row = hstack({.spacing = gap});
    for (auto *cell : cells)
        addToStack(*row, EqualShare{cell});
    setLayout(row);
}

void StatsRow::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath whole;
    whole.addRoundedRect(rect(), m_radius, m_radius);
    painter.fillPath(whole, m_background);
    for (const auto *cell : m_cells) {
        QPainterPath place;
        place.addRect(cell->geometry());
        painter.fillPath(whole.intersected(place), theme::gray(cellLevel));
    }
}

} // namespace korvo
