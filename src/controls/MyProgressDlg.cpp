#include "controls/MyProgressDlg.h"

#include "controls/Look.h"
#include "controls/Style.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

MyProgressDlg::MyProgressDlg(const QString &title, const QString &label, const QString &button, QWidget *parent)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint),
      m_label(new QLabel(label, this)),
      m_bar(new QProgressBar(this)),
      m_button(new QPushButton(button, this))
{
    setWindowTitle(title);
    setModal(true);
    setStyleSheet(messageBoxStyle() + labelStyle() + progressBarStyle() + pushButtonStyle());

    m_label->setWordWrap(true);
    m_label->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    m_label->setTextInteractionFlags(Qt::NoTextInteraction);
    m_bar->setRange(0, 100);
    m_bar->setValue(0);
    m_bar->ensurePolished();
    m_bar->setFixedHeight(std::max(dp(18), m_bar->fontMetrics().height() + dp(2)));
    m_bar->setAccessibleName(title);
    m_button->setAutoDefault(true);
    QSizePolicy keepsPlace = m_button->sizePolicy();
    keepsPlace.setRetainSizeWhenHidden(true);
    m_button->setSizePolicy(keepsPlace);

    auto *buttonRow = new QHBoxLayout;
    buttonRow->addStretch(1);
    buttonRow->addWidget(m_button);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(dp(16), dp(12), dp(16), dp(12));
    column->setSpacing(dp(10));
    column->addWidget(m_label, 1);
    column->addWidget(m_bar);
    column->addLayout(buttonRow);
    setFixedWidth(dp(360));
    fitHeight();
    connect(m_button, &QPushButton::clicked, this, &MyProgressDlg::reject);
}

void MyProgressDlg::setLabelText(const QString &text)
{
    if (text == m_label->text()) {
        return;
    }
    m_label->setText(text);
    fitHeight();
}

QString MyProgressDlg::labelText() const
{
    return m_label->text();
}

void MyProgressDlg::setButtonVisible(bool visible)
{
    m_button->setVisible(visible);
    if (visible) {
        m_button->setFocus(); // it may have been hidden when the dialog gave out the focus
    }
}

int MyProgressDlg::progress() const
{
    return m_bar->value();
}

void MyProgressDlg::setProgress(int v)
{
    if (v >= 100 && autoAccept) {
        accept();
    } else {
        m_bar->setValue(std::clamp(v, 0, 100));
    }
}

void MyProgressDlg::reject()
{
    if (m_button->isHidden()) {
        return;
    }
    if (closeOnButton) {
        QDialog::reject();
    } else {
        emit rejected();
    }
}

void MyProgressDlg::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    m_button->setFocus();
}

/// Room for two lines, so that the dialog keeps its size while the label changes from state to state; a longer text
/// makes it grow and never shrink again.
void MyProgressDlg::fitHeight()
{
    m_label->ensurePolished();
    const int textWidth = width() - layout()->contentsMargins().left() - layout()->contentsMargins().right();
    const int lines = std::max(2 * m_label->fontMetrics().lineSpacing() + dp(4), m_label->heightForWidth(textWidth));
    if (lines <= m_label->minimumHeight()) {
        return;
    }
    m_label->setMinimumHeight(lines);
    setFixedHeight(layout()->totalMinimumSize().height());
}
