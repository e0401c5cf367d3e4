#include "Views/FormText.h"

#include "Views/TextStyle.h"
#include "Views/Theme.h"

#include <QAccessible>
#include <QFontMetricsF>
#include <QHelpEvent>
#include <QPainter>
#include <QTextLayout>
#include <QToolTip>

#include <algorithm>
#include <cmath>

namespace korvo {

using namespace Qt::StringLiterals;

namespace {

constexpr int characterLimit = 20000; // Pages of it: an answer may be a whole document.
constexpr int leastCharacters = 12;   // Side by side with something wide.
constexpr int usualCharacters = 40;

} // namespace

FormText::FormText(Role role, const QString &text, Lines lines, QWidget *parent) :
    QLabel(parent),
    m_role(role),
    m_lines(lines)
{
    setTextFormat(Qt::PlainText);
    QSizePolicy policy(QSizePolicy::Preferred, lines == Lines::any ? QSizePolicy::Minimum : QSizePolicy::Preferred);
    policy.setHeightForWidth(lines == Lines::any);
    setSizePolicy(policy);
    takeFont();
    setText(text);
}

void FormText::announce(const QString &text)
{
    if (text == this->text())
        return;
    setText(text);
    updateGeometry();
    if (text.isEmpty())
        return;
    QAccessibleEvent event(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&event);
    emit announced(text);
}

void FormText::takeFont()
{
    const auto fontOf = [](Role role) {
        switch (role) {
        case Role::heading:
            return makeFont(SystemText::body, QFont::DemiBold);
        case Role::caption:
        case Role::error:
            return makeFont(SystemText::subheadline);
        case Role::success:
        case Role::failure:
            break;
        }
        return makeFont(SystemText::body);
    };
    const QFont font = fontOf(m_role);
    if (font != this->font())
        setFont(font);
}

QColor FormText::ink() const
{
    switch (m_role) {
    case Role::heading:
        break;
    case Role::caption:
        return theme::secondaryOn(palette());
    case Role::error:
    case Role::failure:
        return theme::redTextOn(palette());
    case Role::success:
        return theme::greenTextOn(palette());
    }
    return palette().color(QPalette::Active, QPalette::WindowText);
}

QStringList FormText::linesFor(int width) const
{
    const QString whole = text().left(characterLimit).simplified();
    if (m_lines == Lines::one)
        return {QFontMetrics(font()).elidedText(whole, Qt::ElideRight, width)};
    QStringList lines;
    QTextLayout layout(whole, font());
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    layout.beginLayout();
    for (auto line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(width);
        lines.append(whole.mid(line.textStart(), line.textLength()).trimmed());
    }
    layout.endLayout();
    if (lines.isEmpty())
        lines.append(QString());
    return lines;
}

bool FormText::isElided() const
{
    return m_lines == Lines::one && shownLines().first() != text().simplified();
}

QSize FormText::sizeHint() const
{
    const QFontMetricsF metrics(font());
    const auto whole = int(std::ceil(metrics.horizontalAdvance(text().left(characterLimit).simplified())));
    if (m_lines == Lines::one)
        return {whole, int(std::ceil(metrics.height()))};
    const int width = std::min(whole, int(usualCharacters * metrics.averageCharWidth()));
    return {width, heightForWidth(width)};
}

QSize FormText::minimumSizeHint() const
{
    const QFontMetricsF metrics(font());
    return {std::min(sizeHint().width(), int(leastCharacters * metrics.averageCharWidth())),
            int(std::ceil(metrics.height()))};
}

int FormText::heightForWidth(int width) const
{
    return int(std::ceil(QFontMetricsF(font()).height())) * int(linesFor(std::max(1, width)).size());
}

bool FormText::event(QEvent *event)
{
    if (event->type() == QEvent::ToolTip && isElided()) {
        // As rich text it is wrapped, and no mark-up in it is taken for ours.
        QToolTip::showText(static_cast<QHelpEvent *>(event)->globalPos(), u"<p>"_s + text().toHtmlEscaped() + u"</p>"_s,
                           this);
        return true;
    }
    if (event->type() == QEvent::ApplicationFontChange)
        takeFont();
    return QLabel::event(event);
}

void FormText::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setPen(ink());
    const int lineHeight = int(std::ceil(QFontMetricsF(font()).height()));
    const auto lines = shownLines();
    QRect line(0, std::max(0, (height() - lineHeight * int(lines.size())) / 2), width(), lineHeight);
    for (const auto &text : lines) {
        painter.drawText(line, int(Qt::AlignLeading | Qt::AlignVCenter) | Qt::TextSingleLine, text);
        line.translate(0, lineHeight);
    }
}

} // namespace korvo
