#include "wave/SmpZoom.h"

#include "controls/FieldKeys.h"
#include "controls/Icons.h"
#include "controls/Look.h"
#include "controls/MyButton.h"
#include "controls/NumberField.h"
#include "controls/Style.h"
#include "settings/Language.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPainter>

#include <cmath>

SmpZoom::SmpZoom(QWidget *parent) : QWidget(parent)
{
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(dp(3), dp(4), dp(6), dp(4));
    row->setSpacing(dp(1));
    m_trigger = addButton(QStringLiteral(":/res/btnZoomTrg"), ::tr("Trigger position centered"), &SmpZoom::slotZoomTrg);
    m_all = addButton(QStringLiteral(":/res/btnZoomAll"), ::tr("Zoom to screen"), &SmpZoom::slotZoomAll);
    m_out = addButton(QStringLiteral(":/res/btnZoomOut"), ::tr("Zoom out"), &SmpZoom::slotZoomOut);
    m_in = addButton(QStringLiteral(":/res/btnZoomIn"), ::tr("Zoom in"), &SmpZoom::slotZoomIn);

    m_edit = new QLineEdit(this);
    m_edit->setObjectName(QStringLiteral("zoomEdit"));
    m_edit->setStyleSheet(lineEditStyle());
    m_edit->ensurePolished();
    m_edit->setFixedWidth(m_edit->fontMetrics().horizontalAdvance(QStringLiteral("0.00000e+00")) + dp(18));
    m_edit->setFixedHeight(controlHeight(m_edit->fontMetrics()));
    m_edit->setAccessibleName(::tr("Samples per pixel"));
    m_edit->setToolTip(::tr("Samples per pixel"));
    new FieldKeys(m_edit);
    row->addSpacing(dp(4));
    row->addWidget(m_edit, 0, Qt::AlignVCenter);
    connect(m_edit, &QLineEdit::editingFinished, this, &SmpZoom::slotZoomFixed);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding);
}

MyButton *SmpZoom::addButton(const QString &icon, const QString &toolTip, void (SmpZoom::*slot)())
{
    auto *button = new MyButton(sharedIcon(icon), toolTip, this);
    button->setObjectName(icon.section(QLatin1Char('/'), -1));
    button->setIconSize(QSize(dp(24), dp(24)));
    button->setFixedWidth(dp(36));
    button->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding);
    button->setRadius(dp(3));
    layout()->addWidget(button);
    connect(button, &QPushButton::clicked, this, slot);
    return button;
}

void SmpZoom::showRatio(double ratio)
{
    m_shown = std::isfinite(ratio) && ratio > 0.0 ? QString::number(ratio) : QString();
    const bool typing = m_edit->hasFocus() && m_edit->isModified();
    if (!typing) {
        takeBack();
    }
}

void SmpZoom::takeBack()
{
    clearFault(*m_edit);
    m_edit->setText(m_shown);
    m_edit->setCursorPosition(0);
}

void SmpZoom::slotZoomTrg()
{
    emit zoomValueChanged(QStringLiteral("Trg"));
}

void SmpZoom::slotZoomAll()
{
    emit zoomValueChanged(QStringLiteral("All"));
}

void SmpZoom::slotZoomOut()
{
    emit zoomValueChanged(QStringLiteral("Out"));
}

void SmpZoom::slotZoomIn()
{
    emit zoomValueChanged(QStringLiteral("In"));
}

void SmpZoom::slotZoomFixed()
{
    const QString text = m_edit->text();
    const std::optional<double> ratio = typedNumber(text);
    const bool isFaulty = !ratio && !text.trimmed().isEmpty() && text != m_shown;
    if (isFaulty) {
        showFault(*m_edit, ::tr("This is not a number."));
    }
    if (m_edit->hasFocus()) {
        if (isFaulty) {
            m_edit->selectAll(); // the digits that follow would call markers elsewhere
        } else {
            m_edit->clearFocus();
        }
        return;
    }
    m_edit->setModified(false);
    // The shown ratio is rounded: whoever only passes through the field must not change the zoom by that.
    if (isFaulty || text == m_shown) {
        return;
    }
    emit zoomValueChanged(ratio ? text.trimmed().replace(QLatin1Char(','), QLatin1Char('.')) : text);
}

void SmpZoom::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape && m_edit->hasFocus()) {
        takeBack();
        m_edit->clearFocus();
    } else {
        QWidget::keyPressEvent(event);
    }
}

void SmpZoom::paintEvent(QPaintEvent *)
{
    const int a = dp(2);
    const double top = m_trigger->y() - a / 2.0;
    const QRectF frame(a / 2.0, top, width() - a, height() + a - 2 * m_trigger->y());
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(0xaf, 0xaf, 0xaf), a, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin));
    painter.setBrush(QColor(0x1f, 0x1f, 0x23));
    painter.drawRoundedRect(frame, 2 * a, 2 * a);
}
