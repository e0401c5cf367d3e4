#include "Views/QuickAddView.h"

#include "Utilities/BoxBlur.h"
#include "Views/ElidedLabel.h"
#include "Views/KeyBadge.h"
#include "Views/RoundedBox.h"
#include "Views/Stack.h"
#include "Views/SymbolIcon.h"
#include "Views/TextStyle.h"
#include "Views/Theme.h"

#include <QImage>
#include <QLineEdit>
#include <QPainter>

#include <limits>
#include <utility>

namespace korvo {

using namespace Qt::StringLiterals;

namespace {

constexpr int cardWidth = 520;
constexpr double cornerRadius = 16;
constexpr int inputHeight = 56;
constexpr int sidePadding = 20;

constexpr double shadowOpacity = 0.6;
constexpr double shadowDrop = 12;
// A shadow of blur radius 40 is softer than 2 points, so it is drawn with pixels of that size: a twentieth of the time.
constexpr double shadowPixel = 2;
constexpr int shadowBlur = 10; // Pixels of each pass; three passes are a Gaussian of half the blur radius.

/// Spaces of all kinds and tabs. Line breaks are none.
bool isBlank(QChar character)
{
    return character == u'\t' || character.category() == QChar::Separator_Space;
}

QString trimmed(QStringView text)
{
    while (!text.isEmpty() && isBlank(text.front()))
        text = text.sliced(1);
    while (!text.isEmpty() && isBlank(text.back()))
        text.chop(1);
    return text.toString();
}

QLineEdit *makeField(const QString &placeholder)
{
    auto *field = new QLineEdit;
    field->setFrame(false);
    field->setFont(makeFont({.size = 16}));
    field->setTextMargins(-2, 0, -2, 0); // The toolkit leaves so much room at the ends of a line.
    field->setPlaceholderText(placeholder);
    field->setAccessibleName(placeholder);
    field->setMaxLength(std::numeric_limits<int>::max()); // The toolkit's own limit would cut a text without a word.
    QPalette palette = field->palette();
    palette.setColor(QPalette::Base, Qt::transparent);
    palette.setColor(QPalette::Text, Qt::white);
    palette.setColor(QPalette::PlaceholderText, theme::white(0.3));
    field->setPalette(palette);
    return field;
}

} // namespace

QuickAddView::QuickAddView(SubmitHandler onSubmit, CancelHandler onCancel, QWidget *parent) :
    QWidget(parent),
    m_onSubmit(std::move(onSubmit)),
    m_onCancel(std::move(onCancel)),
    m_field(makeField(tr("What are you working on?")))
{
    auto *input = section(u"input"_s, inputRow());
    input->setFixedHeight(inputHeight);
    auto *hints = section(u"hints"_s, hintRow());
    setLayout(vstack({.spacing = 0, .padding = shadowMargins}, input, makeRule(theme::white(0.04), 0), hints));
    setFixedWidth(cardWidth + shadowMargins.left() + shadowMargins.right());
    setFocusProxy(m_field);
    connect(m_field, &QLineEdit::returnPressed, this, &QuickAddView::submit);
}

QLayout *QuickAddView::inputRow()
{
    auto *plus = new SymbolIcon(Symbol::plusCircle, 18, theme::faded(theme::systemGreen, 0.4));
    auto *row = hstack({.spacing = 12, .padding = padding(sidePadding, 0)}, plus);
    row->addWidget(m_field, 1, Qt::AlignVCenter);
    addToStack(*row, new KeyBadge(u"↵"_s));
    return row;
}

QLayout *QuickAddView::hintRow()
{
    auto *dot = makeDot(6, theme::faded(theme::systemGreen, 0.6));
    auto *words = new ElidedLabel(tr("Task will be created in Notion & timer starts"), TextStyle{.size = 11},
                                  theme::white(0.3));
    return hstack({.padding = padding(sidePadding, 10)}, hstack({.spacing = 6}, dot, words), Spacer(),
                  new KeyBadge(tr("Esc")));
}

QString QuickAddView::taskName() const
{
    QString name = m_field->text();
    name.replace(u"\r\n"_s, u" "_s);
    for (QChar &character : name) {
        if (character == u'\n' || character == u'\r' || character == QChar::LineSeparator
            || character == QChar::ParagraphSeparator)
            character = u' ';
    }
    return name;
}

bool QuickAddView::isFocused() const
{
    return m_field->hasFocus();
}

void QuickAddView::submit()
{
    if (trimmed(taskName()).isEmpty())
        return;
    m_onSubmit(trimmed(taskName())); // The last thing: it may close the panel.
}

void QuickAddView::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    m_field->setFocus();
}

QPainterPath QuickAddView::outline(const QSize &card)
{
    QPainterPath path;
    path.addRoundedRect(QRectF(QPointF(), card), cornerRadius, cornerRadius);
    return path;
}

void QuickAddView::paintEvent(QPaintEvent *)
{
    const QRectF card = rect().marginsRemoved(shadowMargins);
    const auto shape = outline(card.size().toSize()).translated(card.topLeft());
    if (m_shadow.devicePixelRatio() != devicePixelRatioF() || m_shadowSize != size()) {
        m_shadow = drawShadow(shape);
        m_shadowSize = size();
    }
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.drawPixmap(QPointF(), m_shadow);
    painter.fillPath(shape, theme::gray(0.04));
    painter.setPen(QPen(theme::white(0.08), 1));
    painter.drawRoundedRect(card.adjusted(0.5, 0.5, -0.5, -0.5), cornerRadius - 0.5, cornerRadius - 0.5);
}

QPixmap QuickAddView::drawShadow(const QPainterPath &card) const
{
    QImage coarse((QSizeF(size()) / shadowPixel).toSize(), QImage::Format_Alpha8);
    if (coarse.isNull())
        return {};
    coarse.fill(0);
    QPainter blot(&coarse);
    blot.setRenderHint(QPainter::Antialiasing);
    blot.scale(1 / shadowPixel, 1 / shadowPixel);
    blot.fillPath(card.translated(0, shadowDrop), QColor::fromRgbF(0, 0, 0, float(shadowOpacity)));
    blot.end();
    boxBlur(coarse.bits(), coarse.width(), coarse.height(), coarse.bytesPerLine(), shadowBlur);

    QPixmap shadow((QSizeF(size()) * devicePixelRatioF()).toSize());
    shadow.setDevicePixelRatio(devicePixelRatioF());
    shadow.fill(Qt::transparent);
    QPainter painter(&shadow);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(QRectF(QPointF(), size()), coarse);
    return shadow;
}

} // namespace korvo
