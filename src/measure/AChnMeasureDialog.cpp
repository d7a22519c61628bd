#include "measure/AChnMeasureDialog.h"

#include "controls/Look.h"
#include "measure/AnalogTexts.h"
#include "settings/Globals.h"
#include "settings/Language.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

constexpr int rows = 6;        // of names and values; the next ones stand beside them
constexpr int valueWidth = 90; // pixels at 96 dpi: the longest times need no wider column

} // namespace

AChnMeasureDialog::AChnMeasureDialog(int chnId, const QString &text, QWidget *parent)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint)
{
    setWindowTitle(QStringLiteral("  %1   : CH%2").arg(::tr("Show All")).arg(chnId + 1));
    QStringList parts = AnalogTexts::partsOf(text);
    if (parts.size() != gMeasureNames.size()) {
        parts.clear();
    }
    auto *group = new QGroupBox(QStringLiteral("CH%1").arg(chnId + 1));
    auto *grid = new QGridLayout(group);
    grid->setContentsMargins(dp(12), dp(8), dp(12), dp(8));
    grid->setHorizontalSpacing(dp(8));
    grid->setVerticalSpacing(dp(6));
    for (int id = 0; id < gMeasureNames.size(); ++id) {
        const QString &name = gMeasureNames.at(id);
        QString shown = AnalogTexts::noValue();
        (void)AnalogTexts::takeValue(parts, name, shown);
        auto *value = new QLabel(shown);
        value->setTextFormat(Qt::PlainText);
        value->setTextInteractionFlags(Qt::TextSelectableByMouse);
        value->setAccessibleDescription(name);
        value->setMinimumWidth(dp(valueWidth));
        valueLabels.append(value);
        const int column = id / rows * 2;
        grid->addWidget(new QLabel(name + QLatin1Char(':')), id % rows, column);
        grid->addWidget(value, id % rows, column + 1);
    }
    auto *button = new QPushButton(::tr("OK"));
    button->setDefault(true);
    connect(button, &QPushButton::clicked, this, &QDialog::accept);

    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(dp(12), dp(12), dp(12), dp(12));
    column->setSpacing(dp(10));
    column->addWidget(group);
    column->addWidget(button, 0, Qt::AlignHCenter);
    button->setFocus();
}
