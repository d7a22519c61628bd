#include "app/FileDialogs.h"

#include "controls/Look.h"
#include "controls/NoticeBox.h"
#include "controls/Style.h"
#include "files/ForeignFile.h"
#include "settings/Config.h"
#include "settings/Language.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QListView>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardPaths>
#include <QTreeView>

#include <algorithm>

namespace FileDialogs {

namespace {

QString lastPathKey()
{
    return QStringLiteral("lastPath");
}

/// The directory of the file is the dialog's, unless the user has typed another one.
QString taken(const QString &path)
{
    const QString directory = QFileInfo(path).absolutePath();
    if (directory != globalGet(lastPathKey())) {
        globalSet(lastPathKey(), directory);
    }
    return path;
}

QString chosenFile(const QFileDialog &dialog)
{
    const QStringList files = dialog.selectedFiles();
    return files.isEmpty() ? QString() : files.constFirst();
}

/// Gives Qt's own dialog a size that follows the screen's scale, and room to the titles of its columns and to the
/// places beside them.
void giveRoom(QFileDialog &dialog)
{
    dialog.resize(dialog.sizeHint().expandedTo(QSize(dp(640), dp(400))));
    const auto *view = dialog.findChild<QTreeView *>(QStringLiteral("treeView"));
    if (view == nullptr) {
        return; // the system's dialog
    }
    QHeaderView *header = view->header();
    header->ensurePolished();
    for (int column = 0; column < header->count(); ++column) {
        header->resizeSection(column, std::max(header->sectionSize(column), header->sectionSizeHint(column)));
    }
    dialog.findChild<QListView *>(QStringLiteral("sidebar"))->setMinimumWidth(dp(110));
}

/// What both dialogs have in common. The labels hold for a system's own dialog too.
void dress(QFileDialog &dialog, const QString &accept)
{
    dialog.setStyleSheet(fileDialogStyle());
    dialog.setLabelText(QFileDialog::LookIn, ::tr("Look in:"));
    dialog.setLabelText(QFileDialog::FileName, ::tr("File name:"));
    dialog.setLabelText(QFileDialog::FileType, ::tr("Files of type:"));
    dialog.setLabelText(QFileDialog::Accept, accept);
    dialog.setLabelText(QFileDialog::Reject, ::tr("Cancel"));
    giveRoom(dialog);
}

/// The suffix of a filter such as "CSV file (*.csv)".
QString suffixOf(const QString &filter)
{
    return filter.section(QStringLiteral("(*."), -1).section(QLatin1Char(')'), 0, 0);
}

bool mayReplace(QWidget *parent, const QString &path)
{
    if (!QFileInfo(path).isFile()) {
        return true;
    }
    QMessageBox box(QMessageBox::Warning, ::tr("Save File"),
                    ::tr("The file already exists. Do you want to replace it?") + QStringLiteral("\r\n") + path,
                    QMessageBox::NoButton, parent);
    box.setTextFormat(Qt::PlainText);
    const QPushButton *replace = box.addButton(::tr("Replace"), QMessageBox::AcceptRole);
    box.setDefaultButton(box.addButton(::tr("Cancel"), QMessageBox::RejectRole));
    fitNotice(box);
    box.exec();
    return box.clickedButton() == replace;
}

} // namespace

SaveKind saveKind(int kind)
{
    switch (kind) {
    case 0:
        return {::tr("Save Data"), ::tr("LUX data file") + QStringLiteral(" (*.cxdat)"), QStringLiteral("cxdat")};
    case 1:
        return {::tr("Save Settings"), ::tr("LUX settings file") + QStringLiteral(" (*.cxset)"),
                QStringLiteral("cxset")};
    case 2:
        return {::tr("Export Data"), ::tr("Text file") + QStringLiteral(" (*.txt)"), QStringLiteral("txt")};
    case 3:
        return {::tr("Export Data"), ::tr("CSV file") + QStringLiteral(" (*.csv)"), QStringLiteral("csv")};
    case 4:
        return {::tr("Export Data"), ::tr("Binary file") + QStringLiteral(" (*.bin)"), QStringLiteral("bin")};
    case 5:
        return {::tr("Save Picture"),
                ::tr("PNG picture") + QStringLiteral(" (*.png);;") + ::tr("SVG drawing") + QStringLiteral(" (*.svg)"),
                QStringLiteral("png")};
    case vcd:
        return {::tr("Export Data"), ::tr("VCD file") + QStringLiteral(" (*.vcd)"), QStringLiteral("vcd")};
    case sr:
        return {::tr("Export Data"), ::tr("Session archive") + QStringLiteral(" (*.sr)"), QStringLiteral("sr")};
    default:
        return {};
    }
}

QString proposedName(const QDateTime &time)
{
    return time.toString(QStringLiteral("yyyy-MM-dd_hh-mm-ss"));
}

QString startDirectory()
{
    QString last = globalGet(lastPathKey());
    if (!last.isEmpty() && QFileInfo(last).isDir()) {
        return last;
    }
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    return QFileInfo(documents).isDir() ? documents : QDir::homePath();
}

QString askSavePath(QWidget *parent, int kind, const QDateTime &now, const QString &ending)
{
    const SaveKind file = saveKind(kind);
    if (file.suffix.isEmpty()) {
        return {};
    }
    QFileDialog dialog(parent, file.title, startDirectory(), file.filter);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.setViewMode(QFileDialog::Detail);
    dialog.setDefaultSuffix(ending.isEmpty() ? file.suffix : ending);
    if (ending.isEmpty()) {
        QObject::connect(&dialog, &QFileDialog::filterSelected, &dialog,
                         [&dialog](const QString &filter) { dialog.setDefaultSuffix(suffixOf(filter)); });
    }
    dress(dialog, ::tr("Save"));
    // A system's dialog asks about the name that was typed, without the suffix that is added behind: asked here.
    dialog.setOption(QFileDialog::DontConfirmOverwrite);
    dialog.selectFile(proposedName(now));
    while (dialog.exec() == QDialog::Accepted) {
        const QString path = chosenFile(dialog);
        if (path.isEmpty() || mayReplace(parent, path)) {
            return path.isEmpty() ? path : taken(path);
        }
    }
    return {};
}

QString askOpenPath(QWidget *parent)
{
    const bool hasArchives = foreignKindIsBuilt(ForeignKind::Sr);
    QFileDialog dialog(parent, ::tr("Open"), startDirectory(),
                       ::tr("LUX file") + QStringLiteral(" (*.cxset *cxdat);;") + // as it stands, without a second dot
                           ::tr("Captures of other programs") +
                           (hasArchives ? QStringLiteral(" (*.sr *.vcd)") : QStringLiteral(" (*.vcd)")));
    dialog.setAcceptMode(QFileDialog::AcceptOpen);
    dialog.setFileMode(QFileDialog::ExistingFile);
    dress(dialog, ::tr("Open"));
    if (dialog.exec() != QDialog::Accepted) {
        return {};
    }
    const QString path = chosenFile(dialog);
    return path.isEmpty() ? path : taken(path);
}

} // namespace FileDialogs
