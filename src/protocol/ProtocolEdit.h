#pragma once

#include "protocol/ChannelChoice.h"

#include <QDialog>
#include <QStringList>
#include <QVector>

class Analyzer;
class AnalyzerManager;
class AnalyzerSettingInterface;
class AnalyzerSettings;
class QCheckBox;
class QComboBox;
class QDialogButtonBox;
class QGridLayout;
class QLabel;
class QLineEdit;
class QScrollArea;
class QStringListModel;

/// The dialog in which an analyzer is set up, to add it or to change it. It builds itself from what the analyzer tells
/// of its settings, and knows no protocol.
///
/// Modal, on its caller's stack. A new analyzer that is not added goes back to its plug-in. A worker that was stopped
/// for a look at the settings runs again when nothing comes of it. When the list of analyzers is loaded anew, as for
/// another device, the dialog closes. Main thread.
class ProtocolEdit : public QDialog {
    Q_OBJECT
public:
    /// @param editMode  true: `index` is an analyzer of the list; false: a library, of which one is to be added
    /// @param manager  not owned, outlives this
    ProtocolEdit(bool editMode, AnalyzerManager *manager, int index, QWidget *parent = nullptr);
    ~ProtocolEdit() override;

    /// False when the plug-in could not make an analyzer: there is nothing to show.
    [[nodiscard]] bool isUsable() const { return analyzer != nullptr; }

public slots:
    void savedClicked();
    void reject() override;

private slots:
    /// The list has changed: its analyzers may be others.
    void slotListChanged();

private:
    void takeAnalyzer(Analyzer *taken);
    /// A worker that does not leave goes with its analyzer, and another takes that one's place. @return whether it did
    bool followAnalyzer();
    /// The same; what the editors hold goes to the other one.
    void writeToOther();
    void buildRows();
    void buildFrame(QScrollArea *area);
    void addRow(AnalyzerSettingInterface &setting, int row);
    [[nodiscard]] QWidget *makeEditor(AnalyzerSettingInterface &setting);
    /// What all boxes with channels offer: made once, since a bus has dozens of them.
    [[nodiscard]] QStringListModel *channelEntries(bool noneToo);
    [[nodiscard]] QWidget *makeChannelEditor(AnalyzerSettingInterface &setting);
    [[nodiscard]] QWidget *makeListEditor(AnalyzerSettingInterface &setting);
    [[nodiscard]] QWidget *makeIntegerEditor(AnalyzerSettingInterface &setting);
    [[nodiscard]] QWidget *makeTextEditor(AnalyzerSettingInterface &setting);
    [[nodiscard]] QWidget *makeBoolEditor(AnalyzerSettingInterface &setting);
    [[nodiscard]] QString translated(const char *text) const;

    /// Writes every editor's value to its setting. @return the places in `intEdits` of numbers out of their range
    [[nodiscard]] QVector<int> writeValues();
    /// In a box for each. The analyzer may be another one, or gone, when a box closes.
    void tellInvalid(const QVector<int> &places);
    void writeChannel(AnalyzerSettingInterface &setting, const QComboBox &edit);
    /// @return whether the number is in its range
    [[nodiscard]] bool writeInteger(AnalyzerSettingInterface &setting, int place);
    [[nodiscard]] bool apply();
    [[nodiscard]] QString settingsText();
    void startAgain();

    int itemIndex;
    const int m_library; ///< of a new analyzer
    AnalyzerManager *const manager;
    Analyzer *analyzer = nullptr; ///< not owned, but for a new one until it is added
    AnalyzerSettings *settings = nullptr;
    QString analyzerName;
    QVector<QByteArray> m_valuesBefore; ///< of each setting, when the dialog opened
    QVector<int> intMax;
    QVector<int> intMin;
    QVector<ChannelChoice::Entry> chnChoices;
    QStringListModel *m_channels = nullptr;       ///< of `chnChoices`; null until one is needed
    QStringListModel *m_channelsOrNone = nullptr; ///< the same with "None" as the last
    int m_channelWidth = 0;                       ///< of their boxes, pixels; 0 until the first is there
    QVector<QLabel *> labels;
    // Each in the order of the settings of its kind.
    QVector<QComboBox *> chnEdits;
    QVector<QComboBox *> listEdits;
    QVector<QLineEdit *> intEdits;
    QVector<QLineEdit *> textEdits;
    QVector<QCheckBox *> boolEdits;
    QGridLayout *grid = nullptr;
    QDialogButtonBox *buttons = nullptr;
    bool m_stopped = false; ///< the worker was stopped here, and has not been started again
    bool m_written = false; ///< the settings hold what the editors do
    bool m_saving = false;
    bool m_gone = false; ///< the analyzer is no longer what it was
};
