#include "panels/MenuDevSettings.h"

#include "controls/Look.h"
#include "device/DevBase.h"
#include "device/DeviceGlobals.h"
#include "settings/Language.h"

#include <QButtonGroup>
#include <QGroupBox>
#include <QKeyEvent>
#include <QRadioButton>
#include <QVBoxLayout>

#include <algorithm>
#include <array>

namespace {

struct ModelChoice {
    const char *text;
    int code;     ///< what is chosen
    int shownToo; ///< the older model of the same name, for which the choice is checked as well; 0 for none
};

constexpr std::array<ModelChoice, 5> choices{{{"RV2310 - 100MHz, 16CH", 5, 0},
                                              {"RV2320 - 100MHz, 16CH", 6, 2},
                                              {"RV2420 - 200MHz, 16CH", 7, 3},
                                              {"RV2520 - 500MHz, 16CH", 8, 4},
                                              {"RV2540 - 500MHz, 32CH", 9, 0}}};

} // namespace

MenuDevSettings::MenuDevSettings(QWidget *parent) : MenuDialog(parent), m_models(new QButtonGroup(this))
{
    connect(gDev, &QObject::destroyed, this, &MenuDialog::dismiss);
    m_models->setExclusive(true);

    const QString blanks = QStringLiteral("  ");
    auto *form = new QWidget;
    auto *box = new QGroupBox(blanks + ::tr("Model Select") + blanks, form);
    auto *column = new QVBoxLayout(box);
    column->setContentsMargins(dp(10), dp(4), dp(10), dp(6));
    column->setSpacing(dp(2));
    for (int i = 0; i < int(choices.size()); ++i) {
        column->addWidget(addModel(i));
    }
    auto *around = new QVBoxLayout(form);
    around->setContentsMargins(dp(10), dp(6), dp(10), dp(10));
    around->addWidget(box);
    addForm(form);
    connect(m_models, QOverload<QAbstractButton *>::of(&QButtonGroup::buttonClicked), this,
            [this](QAbstractButton *button) { choose(m_models->id(button)); });
}

QRadioButton *MenuDevSettings::addModel(int index)
{
    const ModelChoice &choice = choices[std::size_t(index)];
    auto *button = new QRadioButton(QString::fromLatin1(choice.text));
    button->setChecked(gDev->model == choice.code || (choice.shownToo != 0 && gDev->model == choice.shownToo));
    button->setEnabled(!gDev->connected);
    button->installEventFilter(this);
    m_models->addButton(button, index);
    return button;
}

void MenuDevSettings::choose(int index)
{
    dismiss();
    emit simDevModelChanged(choices[std::size_t(index)].code);
}

void MenuDevSettings::showEvent(QShowEvent *event)
{
    MenuDialog::showEvent(event);
    QAbstractButton *first = m_models->checkedButton() != nullptr ? m_models->checkedButton() : m_models->button(0);
    first->setFocus(Qt::PopupFocusReason);
}

/// In a group of radio buttons an arrow key clicks the next one, which would choose a model on the way to another.
bool MenuDevSettings::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        const bool isBack = key == Qt::Key_Up || key == Qt::Key_Left;
        if (isBack || key == Qt::Key_Down || key == Qt::Key_Right) {
            const int index = m_models->id(qobject_cast<QAbstractButton *>(watched)) + (isBack ? -1 : 1);
            m_models->button(std::clamp(index, 0, int(choices.size()) - 1))->setFocus(Qt::OtherFocusReason);
            return true;
        }
    }
    return MenuDialog::eventFilter(watched, event);
}
