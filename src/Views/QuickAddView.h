#pragma once

#include <QMargins>
#include <QPainterPath>
#include <QPixmap>
#include <QSize>
#include <QWidget>

#include <functional>

class QLineEdit;

namespace korvo {

/// The card of the quick-add panel, with its shadow around it: a line to type a task's name into, and a line of hints.
class QuickAddView : public QWidget {
    Q_OBJECT
public:
    using SubmitHandler = std::function<void(const QString &name)>;
    using CancelHandler = std::function<void()>;

    /// How far the shadow reaches beyond the card.
    static constexpr QMargins shadowMargins{60, 48, 60, 72};

    /// `onSubmit` gets what was typed, without blanks at its ends, and never nothing. `onCancel` is kept and not called:
    /// whoever shows the view sees to the Escape key.
    QuickAddView(SubmitHandler onSubmit, CancelHandler onCancel, QWidget *parent = nullptr);

    /// The text as it stands in the field. A line break that a paste has brought is a space, as which the field shows it.
    QString taskName() const;

    /// Whether what is typed goes into the field.
    bool isFocused() const;

    /// The outline of a card of that size.
    static QPainterPath outline(const QSize &card);

protected:
    void showEvent(QShowEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    QLayout *inputRow();
    QLayout *hintRow();
    void submit();
    QPixmap drawShadow(const QPainterPath &card) const;

    SubmitHandler m_onSubmit;
    CancelHandler m_onCancel;
    QLineEdit *m_field;
    QPixmap m_shadow; ///< Of the present size and scale; drawn when it is first needed.
    QSize m_shadowSize;
};

} // namespace korvo
