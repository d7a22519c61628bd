#include "protocol/ExportDialog.h"

#include "controls/Look.h"
#include "controls/Style.h"
#include "settings/Language.h"

#include <QButtonGroup>
#include <QGroupBox>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>

#include <algorithm>

namespace {

constexpr int leastWidth = 405;     // units
constexpr int greatestHeight = 480; // units; what is higher scrolls

QString withoutKeys(QString text)
{
    return text.replace(QLatin1Char('&'), QStringLiteral("&&"));
}

} // namespace

ExportDialog::ExportDialog(const QVector<ExportOption> &options, QWidget *parent)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint)
{
    setWindowTitle(::tr("Export File Select"));
    setModal(true);
    setMinimumWidth(dp(leastWidth));
    setStyleSheet(messageBoxStyle() + checkBoxStyle() + groupBoxStyle() + pushButtonStyle() + scrollBarStyle());

    QScrollArea *scroll = makeGroups(options);
    auto *accepts = new QPushButton(::tr("OK"), this);
    auto *rejects = new QPushButton(::tr("Cancel"), this);
    for (QPushButton *button : {accepts, rejects}) {
        button->setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Minimum); // as high as each other
    }
    accepts->setDefault(true);
    accepts->setEnabled(!m_choices.isEmpty());
    connect(accepts, &QPushButton::clicked, this, &ExportDialog::exportSavedClicked);
    connect(rejects, &QPushButton::clicked, this, &ExportDialog::exportCancelClicked);
    auto *row = new QHBoxLayout;
    row->setSpacing(dp(8));
    row->addStretch(1);
    row->addWidget(accepts);
    row->addWidget(rejects);

    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(dp(16), dp(12), dp(16), dp(12));
    column->setSpacing(dp(10));
    column->addWidget(scroll, 1);
    column->addLayout(row);
    if (!exportButtons.isEmpty()) {
        exportButtons.constFirst()->setChecked(true);
        exportButtons.constFirst()->setFocus();
    }
}

QScrollArea *ExportDialog::makeGroups(const QVector<ExportOption> &options)
{
    auto *groups = new QWidget;
    auto *list = new QVBoxLayout(groups);
    list->setContentsMargins(0, 0, 0, 0);
    list->setSpacing(dp(10));
    auto *buttons = new QButtonGroup(this);
    for (const ExportOption &option : options) {
        list->addWidget(makeGroup(option, *buttons));
    }
    list->addStretch(1);
    auto *scroll = new QScrollArea(this);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setWidgetResizable(true);
    scroll->setFocusPolicy(Qt::NoFocus);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setWidget(groups);
    scroll->viewport()->setAutoFillBackground(false); // the dialog's ground shows through
    groups->setAutoFillBackground(false);
    groups->ensurePolished();
    scroll->setMinimumHeight(std::min(groups->sizeHint().height(), dp(greatestHeight)));
    scroll->setMinimumWidth(groups->sizeHint().width() + scroll->verticalScrollBar()->sizeHint().width());
    return scroll;
}

QGroupBox *ExportDialog::makeGroup(const ExportOption &option, QButtonGroup &buttons)
{
    const QString blanks = QStringLiteral("  ");
    auto *group = new QGroupBox(blanks + withoutKeys(option.name) + blanks);
    auto *list = new QVBoxLayout(group);
    list->setContentsMargins(dp(10), dp(4), dp(10), dp(6));
    list->setSpacing(dp(2));
    for (const ExportChoice &choice : option.choices) {
        auto *button = new QRadioButton(withoutKeys(choice.text));
        button->setAccessibleDescription(option.name);
        buttons.addButton(button);
        list->addWidget(button);
        exportButtons.append(button);
        m_choices.append(choice);
    }
    return group;
}

void ExportDialog::exportSavedClicked()
{
    for (int i = 0; i < exportButtons.size(); ++i) {
        if (exportButtons.at(i)->isChecked()) {
            const ExportChoice choice = m_choices.at(i);
            accept();
            emit chosen(choice);
            return;
        }
    }
}

void ExportDialog::exportCancelClicked()
{
    reject();
}
