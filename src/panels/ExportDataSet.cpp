#include "panels/ExportDataSet.h"

#include "controls/Look.h"
#include "controls/NumberField.h"
#include "controls/Style.h"
#include "device/DevBase.h"
#include "device/DeviceGlobals.h"
#include "settings/Language.h"
#include "wave/MainView.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpressionValidator>

#include <algorithm>

namespace {

constexpr int boxesInARow = 8;
constexpr int pairCharacters = 10;
constexpr int fieldWidth = 160; ///< pixels at 96 dpi

} // namespace

ExportDataSet::ExportDataSet(const QVector<ShownPair> &pairs, QWidget *parent)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint),
      m_markers(ExportMarkers::of(pairs)),
      m_chnBoxes(makeBoxes(gDev->chnEnable, 0)),
      m_aChnBoxes(makeBoxes(gDev->aChnEnable, 1)),
      m_time(new QButtonGroup(this))
{
    setWindowTitle(::tr("Export Data"));
    setModal(true);
    setStyleSheet(messageBoxStyle() + labelStyle() + lineEditStyle() + comboBoxStyle() + checkBoxStyle() +
                  groupBoxStyle() + pushButtonStyle());

    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(dp(16), dp(12), dp(16), dp(12));
    column->setSpacing(dp(10));
    const bool analog = !m_aChnBoxes.isEmpty();
    column->addWidget(makeGroup(analog ? ::tr("Digital Channel Select") : ::tr("Channel Select"), m_chnBoxes));
    if (analog) {
        auto *group = makeGroup(::tr("Analog Channel Select"), m_aChnBoxes);
        group->setToolTip(::tr("Files and exports hold the digital channels only."));
        group->setAccessibleDescription(group->toolTip());
        column->addWidget(group);
    }
    column->addWidget(makeTimeGroup());

    auto *accepts = new QPushButton(::tr("OK"), this);
    auto *rejects = new QPushButton(::tr("Cancel"), this);
    for (QPushButton *button : {accepts, rejects}) {
        // As high as each other, also when only one of the texts needs a font with higher letters.
        button->setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Minimum);
    }
    accepts->setDefault(true);
    connect(accepts, &QPushButton::clicked, this, &QDialog::accept);
    connect(rejects, &QPushButton::clicked, this, &QDialog::reject);
    auto *buttonRow = new QHBoxLayout;
    buttonRow->setSpacing(dp(8));
    buttonRow->addStretch(1);
    buttonRow->addWidget(accepts);
    buttonRow->addWidget(rejects);
    column->addLayout(buttonRow);

    evenColumns();
    enableChoices();
    layout()->setSizeConstraint(QLayout::SetFixedSize);
}

QVector<QCheckBox *> ExportDataSet::makeBoxes(const QVector<bool> &checked, int firstNumber)
{
    QVector<QCheckBox *> boxes;
    for (int i = 0; i < checked.size(); ++i) {
        auto *box = new QCheckBox(QStringLiteral("CH%1").arg(i + firstNumber));
        box->setChecked(checked[i]);
        boxes.append(box);
    }
    return boxes;
}

QGroupBox *ExportDataSet::makeGroup(const QString &title, const QVector<QCheckBox *> &boxes)
{
    auto *group = new QGroupBox(title);
    auto *grid = new QGridLayout(group);
    grid->setHorizontalSpacing(dp(8));
    grid->setVerticalSpacing(dp(2));
    for (int i = 0; i < boxes.size(); ++i) {
        grid->addWidget(boxes[i], i / boxesInARow, i % boxesInARow, Qt::AlignLeft);
    }
    grid->setColumnStretch(boxesInARow, 1); // a short row stays at the left
    return group;
}

void ExportDataSet::evenColumns()
{
    int width = 0;
    for (QCheckBox *box : m_chnBoxes + m_aChnBoxes) {
        box->ensurePolished();
        width = std::max(width, box->sizeHint().width());
    }
    for (QCheckBox *box : m_chnBoxes + m_aChnBoxes) {
        box->setMinimumWidth(width);
    }
}

QGroupBox *ExportDataSet::makeTimeGroup()
{
    auto *group = new QGroupBox(::tr("Time Select"));
    QRadioButton *all = addChoice(AllTime, ::tr("All time"));
    QRadioButton *markers = addChoice(TimingMarkers, ::tr("Timing markers"));
    m_pair = new QComboBox;
    m_pair->addItems(m_markers.names);
    m_pair->setMinimumContentsLength(pairCharacters);
    m_pair->setAccessibleName(::tr("Timing markers"));
    dressComboBox(*m_pair);
    m_pair->setMinimumWidth(dp(fieldWidth));
    QRadioButton *interval = addChoice(Interval, ::tr("Specify time interval"));
    const QStringList texts = exportIntervalTexts(ExportCapture::of(*gDev->smpData));
    m_startLabel = addField(m_start, ::tr("Starting Time[s]"), texts[0]);
    m_endLabel = addField(m_end, ::tr("Ending Time[s]"), texts[1]);

    auto *grid = new QGridLayout(group);
    grid->setHorizontalSpacing(dp(8));
    grid->setVerticalSpacing(dp(6));
    grid->addWidget(all, 0, 0, 1, 2);
    grid->addWidget(markers, 1, 0, 1, 2);
    grid->addWidget(m_pair, 1, 2, Qt::AlignLeft);
    grid->addWidget(interval, 2, 0, 1, 2);
    grid->addWidget(m_startLabel, 3, 1);
    grid->addWidget(m_start, 3, 2, Qt::AlignLeft);
    grid->addWidget(m_endLabel, 4, 1);
    grid->addWidget(m_end, 4, 2, Qt::AlignLeft);
    grid->setColumnMinimumWidth(0, dp(14)); // the fields belong to the choice above them
    grid->setColumnStretch(2, 1);

    all->setChecked(true);
    markers->setEnabled(!m_markers.names.isEmpty());
    connect(m_time, QOverload<QAbstractButton *, bool>::of(&QButtonGroup::buttonToggled), this,
            &ExportDataSet::enableChoices);
    return group;
}

QRadioButton *ExportDataSet::addChoice(Time time, const QString &text)
{
    auto *button = new QRadioButton(text);
    m_time->addButton(button, time);
    return button;
}

QLabel *ExportDataSet::addField(QLineEdit *&field, const QString &label, const QString &text)
{
    static const QRegularExpression pattern(QStringLiteral("^[-|0-9|.|,]+$"));
    field = new QLineEdit(text);
    field->setValidator(new QRegularExpressionValidator(pattern, field));
    field->setAccessibleName(label);
    field->ensurePolished();
    field->setFixedSize(dp(fieldWidth), controlHeight(field->fontMetrics()));
    auto *before = new QLabel(label);
    before->setBuddy(field);
    return before;
}

void ExportDataSet::enableChoices()
{
    m_pair->setEnabled(m_time->checkedId() == TimingMarkers);
    const bool interval = m_time->checkedId() == Interval;
    for (QWidget *widget : {static_cast<QWidget *>(m_startLabel), static_cast<QWidget *>(m_start),
                            static_cast<QWidget *>(m_endLabel), static_cast<QWidget *>(m_end)}) {
        widget->setEnabled(interval);
    }
}

void ExportDataSet::accept()
{
    if (m_time->checkedId() == Interval) {
        for (QLineEdit *field : {m_start, m_end}) {
            // An empty field is the trigger.
            if (!field->text().isEmpty() && !typedNumber(field->text())) {
                field->setFocus();
                field->selectAll();
                showFault(*field, ::tr("This is not a number."));
                return;
            }
        }
    }
    QDialog::accept();
}

void ExportDataSet::getSelection(std::vector<std::uint8_t> &chnSelect, double &start, double &end) const
{
    const SmpData &store = *gDev->smpData;
    chnSelect.assign(std::size_t(store.chnCount), 0);
    const int boxes = std::min(int(m_chnBoxes.size()), int(store.chnCount));
    for (int chn = 0; chn < boxes; ++chn) {
        chnSelect[std::size_t(chn)] = m_chnBoxes[chn]->isChecked() ? 1 : 0;
    }

    const ExportCapture capture = ExportCapture::of(store);
    ExportRange range = exportWholeRange(capture);
    if (m_time->checkedId() == TimingMarkers) {
        range = exportMarkerRange(m_markers, m_pair->currentIndex());
    } else if (m_time->checkedId() == Interval) {
        range = exportInterval(m_start->text(), m_end->text(), capture);
    }
    start = range.start;
    end = range.end;
}
