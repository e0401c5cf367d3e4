#include "Views/SettingsSidebar.h"

#include "Views/Theme.h"

#include <QEvent>
#include <QPainter>
#include <QPen>
#include <QStyledItemDelegate>

#include <algorithm>

namespace korvo {

namespace {

constexpr int margin = 10; ///< Around the rows.
constexpr int rowPadding = 7;
constexpr int textInset = 8;
constexpr int textGap = 8;
constexpr double radius = 6;

int symbolSize(const QFontMetrics &metrics)
{
    return std::max(16, metrics.height());
}

/// A row as a rounded bar, with its symbol in the colour of its words.
class RowPainter final : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &) const override
    {
        return {1, symbolSize(option.fontMetrics) + 2 * rowPadding};
    }

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        const auto tab = SettingsTab(index.data(Qt::UserRole).toInt());
        const auto &palette = option.palette;
        const bool isSelected = option.state & QStyle::State_Selected;
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(Qt::NoPen);
        const QRectF bar = option.rect;
        if (isSelected)
            painter->setBrush(palette.color(QPalette::Active, QPalette::Highlight));
        else if (option.state & QStyle::State_MouseOver)
            painter->setBrush(theme::faded(palette.color(QPalette::Active, QPalette::WindowText), 0.07));
        else
            painter->setBrush(Qt::NoBrush);
        painter->drawRoundedRect(bar, radius, radius);

        const auto ink = palette.color(QPalette::Active, isSelected ? QPalette::HighlightedText : QPalette::WindowText);
        const int side = symbolSize(option.fontMetrics);
        QRect symbol(0, 0, side, side);
        symbol.moveCenter(option.rect.center());
        symbol.moveLeft(option.rect.left() + textInset);
        QRect words = option.rect.adjusted(textInset + side + textGap, 0, -textInset, 0);
        symbol = QStyle::visualRect(option.direction, option.rect, symbol);
        words = QStyle::visualRect(option.direction, option.rect, words);
        drawSymbol(*painter, symbol, iconOf(tab), ink);
        painter->setFont(option.font);
        painter->setPen(ink);
        const auto title = option.fontMetrics.elidedText(rawValue(tab), Qt::ElideRight, words.width());
        painter->drawText(words, int(QStyle::visualAlignment(option.direction, Qt::AlignLeft) | Qt::AlignVCenter),
                          title);

        if ((option.state & QStyle::State_HasFocus) && (option.state & QStyle::State_KeyboardFocusChange)) {
            painter->setBrush(Qt::NoBrush);
            painter->setPen(QPen(theme::faded(ink, 0.6), 1));
            painter->drawRoundedRect(bar.adjusted(2, 2, -2, -2), radius - 2, radius - 2);
        }
        painter->restore();
    }
};

} // namespace

SettingsSidebar::SettingsSidebar(QWidget *parent) : QListWidget(parent)
{
    setFixedWidth(columnWidth);
    setFrameShape(QFrame::NoFrame);
    setBackgroundRole(QPalette::Base); // Of the margins too.
    setAutoFillBackground(true);
    setViewportMargins(margin, margin, margin, margin);
    setSpacing(0);
    setMouseTracking(true);
    setItemDelegate(new RowPainter(this));
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setAccessibleName(tr("Settings"));
    for (const auto tab : allSettingsTabs) {
        auto *row = new QListWidgetItem(rawValue(tab), this);
        row->setData(Qt::UserRole, int(tab));
        row->setData(Qt::AccessibleTextRole, rawValue(tab));
    }
    takeColors();
    setCurrentRow(0);
    connect(this, &QListWidget::currentRowChanged, this, [this] { emit selectedTabChanged(selectedTab()); });
}

SettingsTab SettingsSidebar::selectedTab() const
{
    return currentRow() < 0 ? SettingsTab::connection : allSettingsTabs.at(size_t(currentRow()));
}

void SettingsSidebar::setSelectedTab(SettingsTab tab)
{
    setCurrentRow(int(std::find(allSettingsTabs.begin(), allSettingsTabs.end(), tab) - allSettingsTabs.begin()));
}

void SettingsSidebar::changeEvent(QEvent *event)
{
    QListWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        takeColors();
}

void SettingsSidebar::takeColors()
{
    auto colors = palette();
    const auto window = colors.color(QPalette::Active, QPalette::Window);
    const auto ground = theme::mixed(window, Qt::black, theme::isDark(colors) ? 0.2 : 0.05);
    if (colors.color(QPalette::Active, QPalette::Base) == ground)
        return;
    colors.setColor(QPalette::Base, ground);
    setPalette(colors);
}

} // namespace korvo
