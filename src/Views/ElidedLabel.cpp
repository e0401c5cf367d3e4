#include "Views/ElidedLabel.h"

#include <QFontMetricsF>
#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QTextLayout>
#include <QToolTip>

#include <cmath>

namespace korvo {

using namespace Qt::StringLiterals;

namespace {

constexpr int characterLimit = 600; // No card is wide enough for more, and each is measured.

} // namespace

ElidedLabel::ElidedLabel(const QString &text, const QFont &font, const QColor &color, int maximumLines,
                         QWidget *parent) :
    QLabel(parent),
    m_maximumLines(maximumLines)
{
    setTextFormat(Qt::PlainText);
    setWordWrap(maximumLines > 1);
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    policy.setHeightForWidth(maximumLines > 1); // At once, whereas QLabel waits for the first text.
    setSizePolicy(policy);
    setFont(font);
    setInk(*this, color);
    setText(text);
}

ElidedLabel::ElidedLabel(const QString &text, const TextStyle &style, const QColor &color, int maximumLines,
                         QWidget *parent) :
    ElidedLabel(text, makeFont(style), color, maximumLines, parent)
{
}

ElidedLabel *ElidedLabel::keptWhole()
{
    m_isKeptWhole = true;
    updateGeometry();
    return this;
}

QString ElidedLabel::wholeLine() const
{
    return text().left(characterLimit).simplified();
}

QStringList ElidedLabel::linesFor(int width) const
{
    const QString whole = wholeLine();
    const QFontMetrics metrics(font());
    if (m_maximumLines == 1)
        return {metrics.elidedText(whole, Qt::ElideRight, width)};

    QStringList lines;
    QTextLayout layout(whole, font());
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    layout.beginLayout();
    for (auto line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(width);
        const int end = line.textStart() + line.textLength();
        if (lines.size() == m_maximumLines - 1 && end < whole.size()) {
            lines.append(metrics.elidedText(whole.mid(line.textStart()), Qt::ElideRight, width));
            break;
        }
        lines.append(whole.mid(line.textStart(), line.textLength()).trimmed());
    }
    layout.endLayout();
    if (lines.isEmpty())
        lines.append(QString());
    return lines;
}

bool ElidedLabel::isElided() const
{
    return shownLines().join(u' ').remove(u' ') != text().simplified().remove(u' ');
}

bool ElidedLabel::showToolTip(const QPoint &globalPosition) const
{
    if (!isElided())
        return false;
    // As rich text it is wrapped, and no mark-up in a name is taken for ours.
    QToolTip::showText(globalPosition, u"<p>"_s + text().toHtmlEscaped() + u"</p>"_s);
    return true;
}

QSize ElidedLabel::sizeHint() const
{
    const QFontMetricsF metrics(font());
    return {int(std::ceil(metrics.horizontalAdvance(wholeLine()))), int(std::ceil(metrics.height()))};
}

QSize ElidedLabel::minimumSizeHint() const
{
    const auto whole = sizeHint();
    if (m_isKeptWhole)
        return whole;
    const auto ellipsis = int(std::ceil(QFontMetricsF(font()).horizontalAdvance(u'…')));
    return {std::min(whole.width(), ellipsis), whole.height()};
}

int ElidedLabel::heightForWidth(int width) const
{
    return int(std::ceil(QFontMetricsF(font()).height())) * int(linesFor(width).size());
}

bool ElidedLabel::event(QEvent *event)
{
    if (event->type() == QEvent::ToolTip && showToolTip(static_cast<QHelpEvent *>(event)->globalPos()))
        return true;
    return QLabel::event(event);
}

void ElidedLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setPen(palette().color(QPalette::WindowText));
    const auto lines = shownLines();
    const int lineHeight = height() / int(lines.size());
    const auto horizontally = QStyle::visualAlignment(layoutDirection(), alignment()) & Qt::AlignHorizontal_Mask;
    QRect line(0, 0, width(), lineHeight);
    for (const auto &text : lines) {
        painter.drawText(line, int(horizontally | Qt::AlignVCenter) | Qt::TextSingleLine, text);
        line.translate(0, lineHeight);
    }
}

} // namespace korvo
