#include "wave/SensitivityMenu.h"

#include "controls/Look.h"
#include "settings/Language.h"

#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QRegularExpressionValidator>
#include <QSignalBlocker>

namespace {

constexpr int fieldWidth = 56; ///< pixels at 96 dpi, as the one below
constexpr int fieldHeight = 21;
constexpr int mostLetters = 6;

} // namespace

SensitivityMenu::SensitivityMenu(QWidget *parent) : MenuDialog(parent)
{
    setObjectName(QStringLiteral("trigExtend"));
    const QString blanks = QStringLiteral("  ");
    auto *form = new QWidget;
    auto *box = new QGroupBox(blanks + ::tr("Trigger Set") + blanks, form);
    auto *label = new QLabel(::tr("Sensitivity:"), box);
    senseEdit = makeField(box);
    senseEdit->setAccessibleName(::tr("Analog trigger") + QStringLiteral(", ") + label->text());
    label->setBuddy(senseEdit);
    auto *line = new QHBoxLayout(box);
    line->setContentsMargins(dp(10), dp(4), dp(10), dp(6));
    line->setSpacing(dp(6));
    line->addWidget(label);
    line->addWidget(senseEdit);
    line->addWidget(new QLabel(QStringLiteral("div"), box));
    auto *around = new QVBoxLayout(form);
    around->setContentsMargins(dp(10), dp(6), dp(10), dp(10));
    around->addWidget(box);
    addForm(form);
    connect(senseEdit, &QLineEdit::editingFinished, this, &SensitivityMenu::editingFinished);
}

SensitivityMenu::~SensitivityMenu()
{
    senseEdit->disconnect(this); // a field that goes away gives up its focus: that is no end of an edit
}

QLineEdit *SensitivityMenu::makeField(QWidget *box)
{
    static const QRegularExpression pattern(QStringLiteral("[0][.,][0-9]+$"));
    auto *field = new QLineEdit(box);
    field->setObjectName(QStringLiteral("sense"));
    field->setFixedSize(dp(fieldWidth), dp(fieldHeight));
    field->setMaxLength(mostLetters);
    field->setValidator(new QRegularExpressionValidator(pattern, field));
    field->setToolTip(::tr("Number between 0.0 and 1.0."));
    return field;
}

void SensitivityMenu::ask(const QString &sensitivity, QPoint place)
{
    senseEdit->setText(sensitivity);
    popup(place);
    senseEdit->setFocus(Qt::PopupFocusReason);
    senseEdit->selectAll();
}

void SensitivityMenu::abandon()
{
    const QSignalBlocker noEntry(senseEdit);
    close();
}

QString SensitivityMenu::sensitivity() const
{
    return senseEdit->text().replace(QLatin1Char(','), QLatin1Char('.')); // as it is stored
}

bool SensitivityMenu::giveFocusAway()
{
    const bool had = senseEdit->hasFocus();
    if (had) {
        senseEdit->clearFocus();
    }
    return had;
}
