// What the settings dialog looks like: a row for each setting.

#include "analyzer/AnalyzerManager.h"
#include "controls/LazyComboBox.h"
#include "controls/Look.h"
#include "controls/Style.h"
#include "protocol/ProtocolEdit.h"
#include "settings/Config.h"
#include "settings/Language.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QStringListModel>

#include <algorithm>
#include <corvanlux/analyzer/Analyzer.h>
#include <corvanlux/analyzer/AnalyzerSettingInterface.h>
#include <corvanlux/analyzer/AnalyzerSettings.h>

namespace {

constexpr int sideMargin = 10; // units, as all below
constexpr int topMargin = 16;
constexpr int gap = 6;
constexpr int spacerAfterChannels = 4;
constexpr int spacerAtEnd = 2;
constexpr int editorHeight = 22;
constexpr int editorWidth = 150;
constexpr int widestEditor = 320;
constexpr int besideFields = 120; ///< height of the dialog's frame and of what else is on the screen
constexpr std::uint32_t mostEntries = 10000;

QString plain(QString text)
{
    return text.replace(QLatin1Char('&'), QStringLiteral("&&")); // no mnemonics of a plug-in's making
}

int widthOf(const LazyComboBox &combo)
{
    return std::clamp(combo.widthOfEntries(), dp(editorWidth), dp(widestEditor));
}

QWidget *makeFixedSpacer(int height, QWidget *parent)
{
    auto *spacer = new QLabel(parent);
    spacer->setFixedHeight(dp(height));
    return spacer;
}

/// Editors that stand below each other are as wide as the one that needs the most.
void makeAlike(const QVector<QWidget *> &editors)
{
    int width = dp(editorWidth);
    for (const QWidget *editor : editors) {
        if (qobject_cast<const QComboBox *>(editor) != nullptr) {
            width = std::max({width, editor->sizeHint().width(), editor->minimumWidth()}); // lazy ones have theirs
        }
    }
    for (QWidget *editor : editors) {
        editor->setFixedWidth(std::min(width, dp(widestEditor)));
    }
}

} // namespace

QString ProtocolEdit::translated(const char *text) const
{
    return trAnalyzer(QString::fromUtf8(text), analyzerName);
}

void ProtocolEdit::buildRows()
{
    setWindowTitle(::tr("Analyzer") + QStringLiteral(" - ") + analyzerName);
    setStyleSheet(messageBoxStyle() + labelStyle() + lineEditStyle() + comboBoxStyle() + checkBoxStyle() +
                  pushButtonStyle() + scrollBarStyle());
    chnChoices = ChannelChoice::entriesOf(manager->enabledChannelUsage(itemIndex), chnShowNameGet);
    auto *area = new QScrollArea(this);
    auto *fields = new QWidget(this);
    area->setWidget(fields); // while it is empty: what moves is styled anew, so that each editor begins in its place
    grid = new QGridLayout(fields);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setSpacing(dp(gap));
    const int count = int(settings->GetSettingsInterfacesCount());
    const int channels = int(settings->GetChannelsCount());
    for (int i = 0; i < count; ++i) {
        AnalyzerSettingInterface *setting = settings->GetSettingsInterface(std::uint32_t(i));
        if (setting != nullptr) {
            addRow(*setting, i < channels ? i : i + 1);
        }
    }
    grid->addWidget(makeFixedSpacer(spacerAfterChannels, fields), channels, 0, 1, 2);
    if (channels < count) {
        grid->addWidget(makeFixedSpacer(spacerAtEnd, fields), count + 1, 0, 1, 2);
    }
    grid->setColumnStretch(1, 1);
    buildFrame(area);
}

void ProtocolEdit::buildFrame(QScrollArea *area)
{
    QWidget *fields = area->widget();
    area->setFrameShape(QFrame::NoFrame);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area->setFocusPolicy(Qt::NoFocus);
    area->setWidgetResizable(true);
    for (QWidget *clear : {area->viewport(), fields}) {
        clear->setAutoFillBackground(false); // the dialog's ground shows
    }

    buttons = new QDialogButtonBox(this);
    QPushButton *ok = buttons->addButton(::tr("OK"), QDialogButtonBox::AcceptRole);
    ok->setDefault(true);
    buttons->addButton(::tr("Cancel"), QDialogButtonBox::RejectRole);
    connect(buttons, &QDialogButtonBox::accepted, this, &ProtocolEdit::savedClicked);
    connect(buttons, &QDialogButtonBox::rejected, this, &ProtocolEdit::reject);

    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(dp(sideMargin), dp(topMargin), dp(sideMargin), dp(sideMargin));
    column->setSpacing(dp(gap));
    column->addWidget(area, 1);
    column->addWidget(buttons);

    ensurePolished();
    for (QWidget *widget : fields->findChildren<QWidget *>()) {
        widget->ensurePolished();
    }
    QVector<QWidget *> values;
    for (QComboBox *edit : chnEdits + listEdits) {
        values.append(edit);
    }
    for (QLineEdit *edit : intEdits + textEdits) {
        values.append(edit);
    }
    makeAlike(values);
    const QSize wanted = fields->sizeHint();
    const QScreen *screen = QGuiApplication::primaryScreen();
    const int most = (screen != nullptr ? screen->availableSize().height() : dp(600)) - dp(besideFields);
    const bool scrolls = wanted.height() > most;
    const int bar = scrolls ? area->verticalScrollBar()->sizeHint().width() + dp(gap) : 0;
    area->setFixedSize(wanted.width() + bar, std::min(wanted.height(), std::max(most, dp(editorHeight))));
    layout()->setSizeConstraint(QLayout::SetFixedSize);
    for (QWidget *editor : fields->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly)) {
        if (editor->focusPolicy() != Qt::NoFocus && qobject_cast<QLabel *>(editor) == nullptr) {
            editor->setFocus();
            break;
        }
    }
}

void ProtocolEdit::addRow(AnalyzerSettingInterface &setting, int row)
{
    QWidget *editor = makeEditor(setting);
    if (editor == nullptr) {
        return;
    }
    const char *told = setting.GetTitle();
    const bool isChannel = setting.GetType() == AnalyzerInterfaceTypeId::Channel;
    const QString title = isChannel ? QString::fromUtf8(told) : translated(told);
    editor->setToolTip(translated(setting.GetToolTip()));
    if (!title.isEmpty()) {
        auto *label = new QLabel(plain(title), grid->parentWidget());
        label->setBuddy(editor);
        label->setToolTip(editor->toolTip());
        labels.append(label);
        grid->addWidget(label, row, 0, Qt::AlignLeft | Qt::AlignVCenter);
    }
    if (editor->accessibleName().isEmpty()) {
        editor->setAccessibleName(title.isEmpty() ? editor->toolTip() : title);
    }
    editor->ensurePolished();
    editor->setFixedHeight(std::max(dp(editorHeight), controlHeight(editor->fontMetrics())));
    grid->addWidget(editor, row, 1, Qt::AlignLeft);
}

QWidget *ProtocolEdit::makeEditor(AnalyzerSettingInterface &setting)
{
    switch (setting.GetType()) {
    case AnalyzerInterfaceTypeId::Channel:
        return makeChannelEditor(setting);
    case AnalyzerInterfaceTypeId::NumberList:
        return makeListEditor(setting);
    case AnalyzerInterfaceTypeId::Integer:
        return makeIntegerEditor(setting);
    case AnalyzerInterfaceTypeId::Text:
        return makeTextEditor(setting);
    case AnalyzerInterfaceTypeId::Bool:
        return makeBoolEditor(setting);
    case AnalyzerInterfaceTypeId::Unknown:
        break;
    }
    return nullptr;
}

QStringListModel *ProtocolEdit::channelEntries(bool noneToo)
{
    QStringListModel *&entries = noneToo ? m_channelsOrNone : m_channels;
    if (entries == nullptr) {
        QStringList texts;
        for (const ChannelChoice::Entry &entry : qAsConst(chnChoices)) {
            texts.append(ChannelChoice::textOf(entry));
        }
        if (noneToo) {
            texts.append(::tr("None"));
        }
        entries = new QStringListModel(texts, this);
    }
    return entries;
}

QWidget *ProtocolEdit::makeChannelEditor(AnalyzerSettingInterface &setting)
{
    auto &channel = static_cast<AnalyzerSettingInterfaceChannel &>(setting);
    auto *combo = new LazyComboBox(grid->parentWidget());
    combo->setModel(channelEntries(channel.GetSelectionOfNoneIsAllowed()));
    if (m_channelWidth == 0) {
        m_channelWidth = widthOf(*combo);
    }
    combo->setFixedWidth(m_channelWidth);
    const int place = itemIndex >= 0 ? ChannelChoice::placeOf(chnChoices, channel.GetChannel().channelIndex,
                                                              Channel().channelIndex, combo->count())
                                     : ChannelChoice::placeForNew(chnChoices, chnEdits.size(), combo->count());
    combo->setCurrentIndex(place);
    chnEdits.append(combo);
    return combo;
}

QWidget *ProtocolEdit::makeListEditor(AnalyzerSettingInterface &setting)
{
    auto &list = static_cast<AnalyzerSettingInterfaceNumberList &>(setting);
    auto *combo = new LazyComboBox(grid->parentWidget());
    int current = 0;
    const std::uint32_t count = std::min(list.GetListboxNumbersCount(), mostEntries);
    for (std::uint32_t i = 0; i < count; ++i) {
        combo->addItem(translated(list.GetListboxString(i)));
        combo->setItemData(int(i), translated(list.GetListboxToolTip(i)), Qt::ToolTipRole);
        const double number = list.GetListboxNumber(i);
        if (!(number < list.GetNumber()) && !(number > list.GetNumber())) {
            current = int(i);
        }
    }
    combo->setFixedWidth(widthOf(*combo));
    combo->setCurrentIndex(current);
    listEdits.append(combo);
    return combo;
}

QWidget *ProtocolEdit::makeIntegerEditor(AnalyzerSettingInterface &setting)
{
    auto &integer = static_cast<AnalyzerSettingInterfaceInteger &>(setting);
    auto *edit = new QLineEdit(QString::number(integer.GetInteger()), grid->parentWidget());
    intMax.append(integer.GetMax());
    intMin.append(integer.GetMin());
    intEdits.append(edit);
    return edit;
}

QWidget *ProtocolEdit::makeTextEditor(AnalyzerSettingInterface &setting)
{
    // As it is written: a letter is a byte of it.
    const QString text = QString::fromLatin1(static_cast<AnalyzerSettingInterfaceText &>(setting).GetText());
    auto *edit = new QLineEdit(trAnalyzer(text, analyzerName), grid->parentWidget());
    textEdits.append(edit);
    return edit;
}

QWidget *ProtocolEdit::makeBoolEditor(AnalyzerSettingInterface &setting)
{
    auto &flag = static_cast<AnalyzerSettingInterfaceBool &>(setting);
    const QString text = translated(flag.GetCheckBoxText());
    auto *box = new QCheckBox(plain(text), grid->parentWidget());
    box->setAccessibleName(text);
    box->setChecked(flag.GetValue());
    boolEdits.append(box);
    return box;
}
