#include "protocol/ProtocolEdit.h"

#include "analyzer/AnalyzerManager.h"
#include "analyzer/DecoderSentence.h"
#include "analyzer/PluginCall.h"
#include "controls/NoticeBox.h"
#include "settings/Language.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QRegularExpression>

#include <corvanlux/analyzer/Analyzer.h>
#include <corvanlux/analyzer/AnalyzerSettingInterface.h>
#include <corvanlux/analyzer/AnalyzerSettings.h>
#include <limits>
#include <utility>

namespace {

/// `text` as a whole number; what is none is 0, and one that no setting can hold is the last on its side.
qint64 wholeNumber(const QString &text)
{
    static const QRegularExpression digits(QStringLiteral("\\A([+-]?)[0-9]+\\z"));
    const QRegularExpressionMatch match = digits.match(text);
    if (!match.hasMatch()) {
        return 0;
    }
    bool isHeld = false;
    const qint64 number = text.toLongLong(&isHeld);
    using Limits = std::numeric_limits<qint64>;
    return isHeld ? number : match.captured(1) == QLatin1String("-") ? Limits::min() : Limits::max();
}

} // namespace

ProtocolEdit::ProtocolEdit(bool editMode, AnalyzerManager *manager_, int index, QWidget *parent)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint),
      itemIndex(editMode ? index : -1),
      m_library(editMode ? -1 : index),
      manager(manager_)
{
    if (editMode) {
        takeAnalyzer(manager->analyzerAt(index));
    } else {
        manager->addLibIndex = index;
        takeAnalyzer(manager->createAnalyzer(index));
    }
    if (isUsable()) {
        for (std::uint32_t i = 0; i < settings->GetSettingsInterfacesCount(); ++i) {
            const AnalyzerSettingInterface *setting = settings->GetSettingsInterface(i);
            m_valuesBefore.append(setting != nullptr ? QByteArray(setting->GetAsText()) : QByteArray());
        }
        buildRows();
        connect(manager, &AnalyzerManager::analyzerItemChanged, this, &ProtocolEdit::slotListChanged);
    }
}

ProtocolEdit::~ProtocolEdit()
{
    if (m_library >= 0) {
        manager->destroyAnalyzer(m_library, analyzer); // nothing when it was added
    }
}

void ProtocolEdit::takeAnalyzer(Analyzer *taken)
{
    analyzer = taken;
    settings = nullptr;
    const QString fault = pluginFault([&] {
        settings = analyzer != nullptr ? analyzer->GetAnalyzerSettings() : nullptr;
        const char *name = analyzer != nullptr ? analyzer->AnalyzerName() : nullptr;
        analyzerName = QString::fromUtf8(name != nullptr ? name : "");
    });
    if (settings == nullptr || !fault.isEmpty()) {
        analyzer = nullptr;
    }
}

bool ProtocolEdit::followAnalyzer()
{
    const bool isReplaced = itemIndex >= 0 && manager->analyzerAt(itemIndex) != analyzer;
    if (isReplaced) {
        takeAnalyzer(manager->analyzerAt(itemIndex));
    }
    return isReplaced;
}

void ProtocolEdit::writeToOther()
{
    if (followAnalyzer()) {
        m_stopped = true; // it has not run
        if (isUsable()) {
            (void)writeValues();
        }
    }
}

// ---- what the user has entered

void ProtocolEdit::writeChannel(AnalyzerSettingInterface &setting, const QComboBox &edit)
{
    const int place = edit.currentIndex();
    const bool isChannel = place >= 0 && place < chnChoices.size();
    static_cast<AnalyzerSettingInterfaceChannel &>(setting).SetChannel(
        isChannel ? Channel(0, std::uint32_t(chnChoices.at(place).number)) : Channel());
}

bool ProtocolEdit::writeInteger(AnalyzerSettingInterface &setting, int place)
{
    const qint64 value = wholeNumber(intEdits.at(place)->text().trimmed());
    const bool isInRange = value >= intMin.at(place) && value <= intMax.at(place);
    if (isInRange) {
        static_cast<AnalyzerSettingInterfaceInteger &>(setting).SetInteger(std::int32_t(value));
    }
    return isInRange;
}

QVector<int> ProtocolEdit::writeValues()
{
    QVector<int> invalid;
    int channel = 0;
    int list = 0;
    int integer = 0;
    int text = 0;
    int flag = 0;
    m_written = true;
    for (std::uint32_t i = 0; i < settings->GetSettingsInterfacesCount(); ++i) {
        AnalyzerSettingInterface *setting = settings->GetSettingsInterface(i);
        if (setting == nullptr) {
            continue;
        }
        if (dynamic_cast<AnalyzerSettingInterfaceChannel *>(setting) != nullptr) {
            writeChannel(*setting, *chnEdits.at(channel++));
        } else if (auto *numbers = dynamic_cast<AnalyzerSettingInterfaceNumberList *>(setting)) {
            const int chosen = listEdits.at(list++)->currentIndex();
            numbers->SetNumber(numbers->GetListboxNumber(std::uint32_t(chosen < 0 ? 0 : chosen)));
        } else if (dynamic_cast<AnalyzerSettingInterfaceInteger *>(setting) != nullptr) {
            const int place = integer++;
            if (!writeInteger(*setting, place)) {
                invalid.append(place);
            }
        } else if (auto *words = dynamic_cast<AnalyzerSettingInterfaceText *>(setting)) {
            words->SetText(textEdits.at(text++)->text().toLatin1().constData());
        } else if (auto *box = dynamic_cast<AnalyzerSettingInterfaceBool *>(setting)) {
            box->SetValue(boolEdits.at(flag++)->isChecked());
        }
    }
    return invalid;
}

void ProtocolEdit::tellInvalid(const QVector<int> &places)
{
    for (const int place : places) {
        const QString range = QStringLiteral(" [%1, %2]").arg(intMin.at(place)).arg(intMax.at(place));
        showNotice(this, QMessageBox::Warning, ::tr("A Setting is Invalid"),
                   ::tr("Please enter an integer in the range") + range);
        if (m_gone) {
            return;
        }
    }
    QLineEdit *first = intEdits.at(places.constFirst());
    first->setFocus();
    first->selectAll();
}

QString ProtocolEdit::settingsText()
{
    QString text;
    const QString fault = pluginFault([&] {
        const char *saved = settings->SaveText();
        text = QString::fromLatin1(saved != nullptr ? saved : "");
    });
    return fault.isEmpty() ? text : QString();
}

bool ProtocolEdit::apply()
{
    bool taken = false;
    QString why;
    QString fault;
    const auto applyNow = [&] {
        fault = pluginFault([&] {
            taken = settings->ApplyInterfaces();
            if (!taken) {
                const char *message = settings->GetSaveErrorMessage();
                why = decoderSentence(QString::fromUtf8(message != nullptr ? message : ""), analyzerName);
            }
        });
    };
    if (itemIndex < 0) {
        applyNow();
    } else {
        manager->changeSettings(itemIndex, [&] {
            writeToOther();
            if (isUsable()) {
                applyNow();
            }
        });
    }
    if (!isUsable() || (fault.isEmpty() && taken)) {
        return isUsable();
    }
    showNotice(this, QMessageBox::Warning, ::tr("A Setting is Invalid"), fault.isEmpty() ? why : fault);
    return false;
}

void ProtocolEdit::savedClicked()
{
    if (m_gone) {
        return;
    }
    followAnalyzer();
    if (!isUsable()) {
        return;
    }
    const QString before = settingsText();
    const QVector<int> invalid = writeValues();
    if (!invalid.isEmpty()) {
        tellInvalid(invalid);
        return;
    }
    m_saving = true;
    if (itemIndex >= 0 && manager->isWorkerRunning(itemIndex)) {
        manager->stopWorker(itemIndex); // the settings are the worker's as well
        m_stopped = true;
        writeToOther();
    }
    m_saving = false;
    if (!isUsable() || !apply() || m_gone) {
        return;
    }
    m_saving = true;
    m_written = false;
    if (settingsText() != before) {
        m_stopped = false;
        if (itemIndex >= 0) {
            manager->restartAnalyzer(itemIndex);
        } else {
            manager->addAnalyzer(std::exchange(analyzer, nullptr));
        }
    }
    startAgain();
    accept();
}

void ProtocolEdit::reject()
{
    if (!m_gone && m_written && itemIndex >= 0 && !followAnalyzer()) {
        // What was refused does not stand in the fields at the next time.
        for (int i = 0; i < m_valuesBefore.size(); ++i) {
            if (AnalyzerSettingInterface *setting = settings->GetSettingsInterface(std::uint32_t(i))) {
                (void)setting->SetFromText(m_valuesBefore.at(i).constData());
            }
        }
    }
    m_saving = true;
    startAgain();
    QDialog::reject();
}

void ProtocolEdit::startAgain()
{
    if (!m_gone && std::exchange(m_stopped, false)) {
        manager->restartAnalyzer(itemIndex);
    }
}

void ProtocolEdit::slotListChanged()
{
    if (m_saving) {
        return;
    }
    // Nobody else works on the list while the dialog is open: it was loaded anew, and the channels may be others too.
    m_gone = true;
    QDialog::reject();
}
