#include "panels/Options.h"

#include "controls/Look.h"
#include "controls/Style.h"
#include "settings/Config.h"
#include "settings/Globals.h"
#include "settings/HistoryOptions.h"
#include "settings/Language.h"

#include <QButtonGroup>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QVBoxLayout>

namespace {

// Ids of the choices: what is stored for them.
constexpr int yes = 1;
constexpr int no = 0;

} // namespace

Options::Options(QWidget *parent, bool checksAtStart)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint)
{
    setWindowTitle(::tr("Options"));
    setStyleSheet(messageBoxStyle() + groupBoxStyle() + checkBoxStyle() + labelStyle() + spinBoxStyle() +
                  pushButtonStyle());
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(dp(14), dp(10), dp(14), dp(12));
    column->setSpacing(dp(8));

    const QStringList onOff{::tr("Enable"), ::tr("Disable")};
    m_update = addChoice(::tr("Check for updates on launch"), onOff, {no, yes},
                         globalGet(QStringLiteral("disAutoUpdate")).toInt() != 0 ? yes : no);
    tellWhatIsSent(*qobject_cast<QWidget *>(m_update->parent()), checksAtStart);
    m_animate = addChoice(::tr("Animate zooming"), onOff, {no, yes}, disAnimateZoom ? yes : no);
    m_view = addChoice(::tr("View state after new sampling"),
                       {::tr("Zoom all the way out"), ::tr("Show time zero, with previous zoom level"),
                        ::tr("Keep exactly the same position as before (if possible)")},
                       {1, 0, 2}, viewState == 1 || viewState == 2 ? viewState : 0);
    m_colour = addChoice(::tr("Use channel color drawing waveform"), onOff, {yes, no}, colorWaveform ? yes : no);

    addHistory();

    auto *buttons = new QHBoxLayout;
    buttons->setSpacing(dp(8));
    buttons->addStretch(1);
    auto *ok = new QPushButton(::tr("OK"), this);
    auto *cancel = new QPushButton(::tr("Cancel"), this);
    ok->setDefault(true);
    buttons->addWidget(ok);
    buttons->addWidget(cancel);
    column->addStretch(1);
    column->addLayout(buttons);
    m_update->checkedButton()->setFocus(); // by itself it would begin on the first one, whichever is chosen
    connect(ok, &QPushButton::clicked, this, &Options::accept);
    connect(cancel, &QPushButton::clicked, this, &Options::reject);
    // As large as its texts need, in any language.
    column->setSizeConstraint(QLayout::SetFixedSize);
}

QButtonGroup *Options::addChoice(const QString &title, const QStringList &texts, const QVector<int> &values,
                                 int checked)
{
    const QString blanks = QStringLiteral("  ");
    auto *box = new QGroupBox(blanks + title + blanks, this);
    auto *column = new QVBoxLayout(box);
    column->setContentsMargins(dp(10), dp(4), dp(10), dp(6));
    column->setSpacing(dp(2));
    auto *group = new QButtonGroup(box);
    group->setExclusive(true);
    for (int i = 0; i < texts.size(); ++i) {
        auto *button = new QRadioButton(texts.at(i), box);
        button->setChecked(values.at(i) == checked);
        group->addButton(button, values.at(i));
        column->addWidget(button);
    }
    layout()->addWidget(box);
    return group;
}

void Options::tellWhatIsSent(QWidget &box, bool checksAtStart)
{
    const QString when =
        checksAtStart ? ::tr("At most once in seven days the update service is asked whether there is a newer version.")
                      : ::tr("This program was built without the check on launch.");
    const QString what = ::tr("A check sends the program's version and word width, the name of the system, the "
                              "instrument's model, the place of the last damaged record of a capture, and whether you "
                              "asked for it. Nothing else is sent.");
    box.setToolTip(QStringLiteral("<p>%1</p><p>%2</p>").arg(when.toHtmlEscaped(), what.toHtmlEscaped()));
    box.setAccessibleDescription(when + QLatin1Char(' ') + what);
}

void Options::addHistory()
{
    const HistoryOptions options = HistoryOptions::stored();
    m_keep = addChoice(::tr("Keep captures in the list of recent ones"),
                       {::tr("Those of instruments"), ::tr("Simulated ones too"), ::tr("Disable")},
                       {int(KeepCaptures::OfInstruments), int(KeepCaptures::All), int(KeepCaptures::None)},
                       int(options.keep));
    auto *box = qobject_cast<QGroupBox *>(m_keep->parent());
    auto *row = new QHBoxLayout;
    row->setSpacing(dp(6));
    m_captures = addLimit(*row, ::tr("Captures at most"), HistoryOptions::capturesMost, options.captures);
    row->addSpacing(dp(10));
    m_gigabytes = addLimit(*row, ::tr("Gigabytes at most"), HistoryOptions::gigabytesMost, options.gigabytes);
    row->addStretch(1);
    qobject_cast<QVBoxLayout *>(box->layout())->addLayout(row);
    const auto showLimits = [this] {
        const bool keeps = KeepCaptures(m_keep->checkedId()) != KeepCaptures::None;
        m_captures->setEnabled(keeps);
        m_gigabytes->setEnabled(keeps);
    };
    connect(m_keep, &QButtonGroup::idClicked, this, showLimits);
    showLimits();
}

QSpinBox *Options::addLimit(QBoxLayout &row, const QString &name, int most, int value)
{
    auto *label = new QLabel(name, this);
    auto *box = new QSpinBox(this);
    box->setRange(1, most);
    box->setValue(value);
    box->setAccessibleName(name);
    box->setMinimumHeight(controlHeight(fontMetrics()));
    label->setBuddy(box);
    row.addWidget(label);
    row.addWidget(box);
    return box;
}

void Options::accept()
{
    HistoryOptions{KeepCaptures(m_keep->checkedId()), m_captures->value(), m_gigabytes->value()}.store();
    globalSet(QStringLiteral("disAutoUpdate"), QString::number(m_update->checkedId()));
    disAnimateZoom = m_animate->checkedId() != 0;
    globalSet(QStringLiteral("disAnimateZoom"), QString::number(m_animate->checkedId()));
    viewState = m_view->checkedId();
    globalSet(QStringLiteral("viewState"), QString::number(viewState));
    colorWaveform = m_colour->checkedId() != 0;
    globalSet(QStringLiteral("colorWaveform"), QString::number(m_colour->checkedId()));
    QDialog::accept();
}
